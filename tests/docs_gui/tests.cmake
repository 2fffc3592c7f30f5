list(APPEND OV_GUI_TEST_SOURCES
  docs_gui/text_sheet_menu_test.cpp
  docs_gui/text_sheet_fields_gui_test.cpp
  docs_gui/template_gui_test.cpp
)

list(APPEND OV_UNIT_TEST_SOURCES
  docs_gui/undo_history_test.cpp
)
