#pragma once
#include <VnIfcCore/VnSpfFilerBase.h>

namespace VN_SDAI {

/// Puts single values into the form of an exchange file.
class ExchangeText final : public VnSpfFilerBase {
public:
    /// What was written so far; valid until more is.
    using VnSpfFilerBase::output;

protected:
    VnIfcInstanceSlot* slotOf(std::uint64_t) override { return nullptr; }
};

} // namespace VN_SDAI
