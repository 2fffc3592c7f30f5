list(APPEND OV_UNIT_TEST_SOURCES
  core/error_test.cpp
  core/list_test.cpp
  core/raii_test.cpp
  core/strings_test.cpp
  core/util_test.cpp
  core/fs_utils_test.cpp
  core/platform_test.cpp
  core/stream_test.cpp
  core/xml_test.cpp
)
