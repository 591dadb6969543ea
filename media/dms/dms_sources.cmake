# The DMS unpacker's sources, relative to media/ (added to kq_media).
set(KQ_DMS_SOURCES
  dms/dms_archive.cpp
  dms/dms_canonical_code.cpp
  dms/dms_checks.cpp
  dms/dms_deep.cpp
  dms/dms_key_search.cpp
  dms/dms_heavy.cpp
  dms/dms_medium.cpp
  dms/dms_quick.cpp
  dms/dms_record.cpp
  dms/dms_rle.cpp
  dms/dms_unpacker.cpp)
