list(APPEND OV_UNIT_TEST_SOURCES
  frame/workspace_test.cpp
  frame/settings_test.cpp
  frame/startup_test.cpp
)
list(APPEND OV_GUI_TEST_SOURCES
  frame/window_stack_test.cpp
  frame/message_test.cpp
  frame/file_dialog_test.cpp
  frame/workspace_gui_test.cpp
)
