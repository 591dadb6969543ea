// Exports of the platform options. Not built yet: they answer E_NOTIMPL.

#include "kq_amiga.h"

extern "C" kq_status KQGetOption(uint32_t, uint32_t, KQOption**, const kq_char*) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQFreeOption(KQOption*) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQSetOption(const kq_char*, const kq_char*, const kq_char*, const kq_char*) {
    return KQ_E_NOTIMPL;
}
