// Exports of the module frame.

#include "kq_amiga.h"

extern "C" const kq_char* KQGetPlatformName(void) {
    // A constant with the module's lifetime: the host never frees it.
    static constexpr kq_char kPlatformName[] = {'A', 'm', 'i', 'g', 'a', 0};
    return kPlatformName;
}
