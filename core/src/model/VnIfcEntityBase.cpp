#include <VnIfcCore/VnIfcAttributeDefinition.h>
#include <VnIfcCore/VnIfcEntityBase.h>
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcStorage.h>
#include <VnIfcCore/VnSpfFilerBase.h>

namespace VN_SDAI {

VnIfcEntityBase::~VnIfcEntityBase() = default;

void* VnIfcEntityBase::operator new(std::size_t size) {
    VnStorage storage;
    return vnAllocate(size, storage);
}

void VnIfcEntityBase::operator delete(void* memory) noexcept {
    // Reached inside an arena scope only when a constructor failed; the memory goes with the arena.
    if (!VnIfcArenaScope::current())
        ::operator delete(memory);
}

bool VnIfcEntityBase::testAttr(const VnIfcAttributeDefinition* attribute) const {
    return attribute && testAttr(VnAnsiString(attribute->name()));
}

bool VnIfcEntityBase::getAttr(const VnAnsiString&, VnIfcVariant&) const { return false; }
bool VnIfcEntityBase::putAttr(const VnAnsiString&, const VnIfcVariant&) { return false; }
bool VnIfcEntityBase::testAttr(const VnAnsiString&) const { return false; }
void VnIfcEntityBase::unsetAttr(const VnAnsiString&) {}
VN::ErrorStatus VnIfcEntityBase::_inFields(VnSpfFilerBase* filer) { return inFields(filer); }
VN::ErrorStatus VnIfcEntityBase::_outFields(VnSpfFilerBase* filer) const { return outFields(filer); }
void VnIfcEntityBase::setInverseCounterParts() {}
void VnIfcEntityBase::resetInverseCounterParts() {}
void VnIfcEntityBase::leaveInverseCounterParts() {}
bool VnIfcEntityBase::settleSelects() { return true; }
void VnIfcEntityBase::counterParts(std::vector<VnDbObjectId>&) const {}
void VnIfcEntityBase::enterCounterPart(const VnDbObjectId&) {}
void VnIfcEntityBase::clearInverses() {}
bool VnIfcEntityBase::forgetReferrer(const VnDbObjectId&) { return false; }
bool VnIfcEntityBase::testAttrCaseInsensitive(const VnAnsiString& name) const { return testAttr(name); }
void VnIfcEntityBase::unsetAttrCaseInsensitive(const VnAnsiString& name) { unsetAttr(name); }
bool VnIfcEntityBase::_getAttr(const VnAnsiString& name, VnIfcVariant& value) const { return getAttr(name, value); }
bool VnIfcEntityBase::_putAttr(const VnAnsiString& name, const VnIfcVariant& value) { return putAttr(name, value); }
bool VnIfcEntityBase::_testAttr(const VnAnsiString& name) const { return testAttr(name); }
void VnIfcEntityBase::_unsetAttr(const VnAnsiString& name) { unsetAttr(name); }
void VnIfcEntityBase::check(VnIfcCheck&) const {}
bool VnIfcEntityBase::listInverseCounterParts(VnIfcInverseList&) const { return false; }
void VnIfcEntityBase::enterInverse(const void*, const VnDbObjectId&) {}
const VnIfcGUID* VnIfcEntityBase::globalId() const noexcept { return nullptr; }

// ---- VnIfcForeignInstance

VN::ErrorStatus VnIfcForeignInstance::outFields(VnSpfFilerBase* filer) const {
    for (const char c : m_parameters.view())
        filer->wrChar(c);
    return VN::eOk;
}

bool VnIfcForeignInstance::isInstanceOf(const char* name) const {
    return name && !m_keyword.isEmpty() && m_keyword.compareNoCase(name) == 0;
}

} // namespace VN_SDAI
