list(APPEND OV_GUI_TEST_SOURCES
  app/editor_window_test.cpp
  app/program_test.cpp
)
