list(APPEND OV_GUI_TEST_SOURCES
  support/gui_driver.cpp
  widgets/picker_test.cpp
  widgets/langstr_widgets_test.cpp
)
