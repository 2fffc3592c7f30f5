list(APPEND OV_GUI_TEST_SOURCES
  widgets/gtk_smoke_test.cpp
)
