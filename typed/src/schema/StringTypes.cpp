#include "SchemaBuilder.h"

namespace VN_SDAI::typed {

// The two types with a width have no name in the schema and no declaration to generate them from.
void SchemaBuilder::addStringTypes() {
    const auto add = [this](const char* name, bool fixed, int width) {
        auto type = std::make_unique<VnIfcStringType>(fixed, width);
        m_anonymousTypes.putAt(name, new VnIfcDefinedType(name, type.release(), true));
    };
    add("string(22)fixed", true, 22);
    add("binary(32)", false, 32);
}

} // namespace VN_SDAI::typed
