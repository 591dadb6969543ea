// Exports of the platform options.

#include "exports/host_text.h"
#include "kq_amiga.h"
#include "module/guard.h"
#include "module/options.h"

extern "C" kq_status KQGetOption(uint32_t index, uint32_t, KQOption** option, const kq_char*) {
    if (option == nullptr) return KQ_E_INVALIDARG;
    *option = nullptr;
    return kq::guard([&] {
        kq::platform::HeapBlock record;
        const kq::HResult result = kq::get_option_record(index, record);
        *option = static_cast<KQOption*>(record.release());
        return result;
    });
}

extern "C" kq_status KQFreeOption(KQOption* option) {
    kq::platform::heap_free(kq::platform::Heap::local, option);
    return KQ_S_OK;
}

extern "C" kq_status KQSetOption(const kq_char* name, const kq_char* value, const kq_char*, const kq_char*) {
    if (name == nullptr) return KQ_E_INVALIDARG;
    return kq::guard([&] { return kq::set_option(kq::text_view(name), kq::text_view(value)); });
}
