// Exports of media: runtime working copies, empty media, copies of medium files, volume
// names, boot tags and device commands. Not built yet: they answer E_NOTIMPL.

#include "kq_amiga.h"

extern "C" kq_status KQGetRuntimeMedium(const kq_char*, const kq_char*, kq_char*, uint32_t,
                                        uint32_t) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQCheckRuntimeMedium(const kq_char*, uint32_t*) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQDismissRuntimeMedium(const kq_char*, void*, uint32_t) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQGetEmptyMedium(kq_char**, void*, uint32_t) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQGetEmptyMedium2(kq_char**, void*, uint32_t, uint32_t) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQFreeEmptyMedium(kq_char*) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQCopyMediumFile(const kq_char*, const kq_char*, uint32_t, kq_char*,
                                      uint32_t) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQGetVolumeName(const kq_char*, kq_char*, uint32_t) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQBootTag(const char*, const kq_char*, uint32_t, kq_char**) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQGetDeviceCommand(uint32_t, uint32_t, uint32_t, uint32_t, const kq_char*,
                                        KQDeviceCommand**) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQFreeDeviceCommand(KQDeviceCommand*) { return KQ_E_NOTIMPL; }
