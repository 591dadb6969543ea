# The content texts' tests, relative to tests/ (they run in both builds).
set(KQ_CONTENT_TESTS
  content/content_info_test.cpp
  content/content_tooltip_test.cpp
  content/device_name_allocator_test.cpp)
