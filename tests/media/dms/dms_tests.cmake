# The DMS unpacker's tests, relative to tests/: those that run in both builds, and those that
# run natively only (they start xdms, the independent unpacker). The sample archives are in
# tests/data/dms.
set(KQ_DMS_PORTABLE_TESTS media/dms/dms_test_support.cpp media/dms/dms_unpacker_test.cpp)
set(KQ_DMS_NATIVE_TESTS media/dms/dms_oracle_test.cpp)
