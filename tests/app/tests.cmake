list(APPEND OV_GUI_TEST_SOURCES
  app/desktop_identity_test.cpp
)
