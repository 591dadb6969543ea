# The content texts' tests, relative to tests/ (they run in both builds).
set(KQ_CONTENT_TESTS
  content/auto_configuration_test.cpp
  content/configuration_import_test.cpp
  content/content_info_test.cpp
  content/file_associations_test.cpp)
