// Exports of models, ROMs, configuration reading and input ports. Not built yet: they answer
// E_NOTIMPL.

#include "kq_amiga.h"

extern "C" kq_status KQGetApplicationInfo(kq_char**, const char*) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQROMExists(const kq_char*, const kq_char*, const kq_char*, const kq_char*) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQGetDefaultSystemROM(kq_char**, const kq_char*) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQGetRestoreSystemFilesPaths(kq_char**, const kq_char*) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQGetInputPortsInfo(const kq_char*, const kq_char*, uint32_t*, uint32_t*,
                                         uint32_t*, uint32_t*) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQGetDefaultInputPortContent(const kq_char*, uint32_t, uint32_t*) {
    return KQ_E_NOTIMPL;
}
