// Exports of the file associations: the file types that the platform claims, one record per
// type.

#include "content/file_associations.h"
#include "exports/host_text.h"
#include "kq_amiga.h"
#include "module/guard.h"
#include "platform/module_file.h"

static_assert(kq::content::kFileAssociationCount == KQ_FILE_ASSOCIATION_COUNT);

extern "C" kq_status KQGetFileAssociation(uint32_t index, KQFileAssociation** association) {
    if (association == nullptr) return KQ_E_INVALIDARG;
    *association = nullptr;
    return kq::guard([&] {
        const std::optional<kq::content::FileAssociationTexts> texts =
            kq::content::file_association(index, kq::platform::module_file_path());
        if (!texts) return kq::status::nothing_more;
        return kq::hand_to_host(kq::content::pack_file_association(*texts), association);
    });
}

extern "C" kq_status KQFreeFileAssociation(KQFileAssociation* association) {
    kq::platform::heap_free(kq::platform::Heap::local, association);
    return KQ_S_OK;
}
