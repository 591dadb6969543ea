// Exports of auto-configuration and file associations. Not built yet: they answer E_NOTIMPL.

#include "kq_amiga.h"

extern "C" kq_status KQGetFileAssociation(uint32_t, KQFileAssociation**) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQFreeFileAssociation(KQFileAssociation*) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQAutoConfigureApplication(const kq_char*, void*, uint32_t, char**) {
    return KQ_E_NOTIMPL;
}
