// Exports of keyboard translation, layouts, raw key strings, keyboard settings and button
// names. Not built yet: they answer E_NOTIMPL.

#include "kq_amiga.h"

extern "C" int64_t KQGetKeyboardInputData(const kq_char*, const kq_char*, const uint8_t*, uint32_t,
                                          uint32_t, uint32_t, uint32_t, KQKeyboardInputData**) {
    return KQ_E_NOTIMPL;
}
extern "C" int64_t KQGetKeyboardInputData2(const kq_char*, const kq_char*, const uint8_t*,
                                           uint32_t, uint32_t, uint32_t, uint32_t, uint32_t,
                                           KQKeyboardInputData**) {
    return KQ_E_NOTIMPL;
}
extern "C" int64_t KQFreeKeyboardInputData(KQKeyboardInputData*) { return KQ_E_NOTIMPL; }
extern "C" int64_t KQPreprocessKeyboardInput(uint64_t, uint64_t, KQKeyboardInputData*, uint32_t,
                                             uint32_t*) {
    return KQ_E_NOTIMPL;
}
extern "C" int64_t KQProcessKeyboardInput(uint64_t, uint64_t, KQKeyboardInputData*, uint32_t,
                                          uint32_t*) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQGetKeyboardLayout(uint32_t, const uint8_t*, uint32_t, kq_char*, uint32_t) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQGetKeyDisplayName(const kq_char*, const kq_char*, const kq_char*, kq_char*,
                                         uint32_t, uint32_t, uint32_t) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQGetStringRawKeys(const kq_char*, KQKeyboardInputData*, uint32_t,
                                        kq_char**) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQFreeStringRawKeys(kq_char*) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQBackupKeyboardSettings(uint32_t) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQGetInputButtonName(uint32_t, uint32_t, uint32_t, kq_char*, uint32_t) {
    return KQ_E_NOTIMPL;
}
