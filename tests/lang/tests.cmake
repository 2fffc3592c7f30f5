list(APPEND OV_UNIT_TEST_SOURCES
  lang/locale_test.cpp
  lang/langstr_test.cpp
  lang/event_bus_test.cpp
  lang/langstr_xml_test.cpp
)
