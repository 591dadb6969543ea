// A stand-in for the CAPSImg library, built twice: with all thirteen entry points, and
// (FAKE_WITHOUT_ENTRIES) with CAPSInit only. The functions do nothing; binding is by name.

#ifdef _WIN32
#define FAKE_EXPORT extern "C" __declspec(dllexport)
#else
#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

FAKE_EXPORT int CAPSInit() { return 0; }
#ifndef FAKE_WITHOUT_ENTRIES
FAKE_EXPORT int CAPSExit() { return 0; }
FAKE_EXPORT int CAPSAddImage() { return 0; }
FAKE_EXPORT int CAPSRemImage(int) { return 0; }
FAKE_EXPORT int CAPSLockImage(int, char*) { return 0; }
FAKE_EXPORT int CAPSLockImageMemory(int, unsigned char*, unsigned, unsigned) { return 0; }
FAKE_EXPORT int CAPSUnlockImage(int) { return 0; }
FAKE_EXPORT int CAPSLoadImage(int, unsigned) { return 0; }
FAKE_EXPORT int CAPSGetImageInfo(void*, int) { return 0; }
FAKE_EXPORT int CAPSLockTrack(void*, int, unsigned, unsigned, unsigned) { return 0; }
FAKE_EXPORT int CAPSUnlockTrack(int, unsigned, unsigned) { return 0; }
FAKE_EXPORT int CAPSUnlockAllTracks(int) { return 0; }
FAKE_EXPORT const char* CAPSGetPlatformName(unsigned) { return "fake"; }
#endif
