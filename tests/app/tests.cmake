list(APPEND OV_GUI_TEST_SOURCES
  app/text_sheet_editor_test.cpp
  app/text_sheet_keys_test.cpp
  app/editor_window_test.cpp
  app/editing_window_test.cpp
)
