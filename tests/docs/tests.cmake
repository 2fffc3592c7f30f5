list(APPEND OV_UNIT_TEST_SOURCES
  docs/text_sheet_test.cpp
  docs/template_test.cpp
  docs/codeset_test.cpp
)
