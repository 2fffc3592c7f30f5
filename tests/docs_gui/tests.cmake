list(APPEND OV_GUI_TEST_SOURCES
  docs_gui/text_sheet_menu_test.cpp
)
