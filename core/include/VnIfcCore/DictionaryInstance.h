#pragma once
#include <VnIfcCore/VnIfcTypes.h>
#include <VnRx/VnPlatform.h>

namespace VN_SDAI {

/// Base of every record of a schema's dictionary (ISO 10303-22, dictionary_instance). A record has one owner, the
/// schema or the record that it is part of, and lives as long as the schema; whatever else points to it does not own
/// it.
class VNIFC_API DictionaryInstance {
public:
    virtual ~DictionaryInstance();
    DictionaryInstance(const DictionaryInstance&) = delete;
    DictionaryInstance& operator=(const DictionaryInstance&) = delete;

protected:
    DictionaryInstance() = default;
};

} // namespace VN_SDAI
