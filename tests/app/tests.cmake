list(APPEND OV_GUI_TEST_SOURCES
  app/text_sheet_editor_test.cpp
)
