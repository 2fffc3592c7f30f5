list(APPEND OV_GUI_TEST_SOURCES
  gui/gui_test.cpp
)
