#pragma once
#include <VnIfcCore/VnAnsiString.h>
#include <VnIfcCore/VnDbObjectId.h>
#include <VnIfcCore/VnIfcObject.h>

#include <new>
#include <string_view>
#include <utility>
#include <vector>

namespace VN_SDAI {

class VnIfcAttributeDefinition;
class VnIfcCheck;
class VnIfcGUID;
class VnIfcInverseList;

/// Base of every entity class: an instance's identity in its model and the operations that the core calls. One instance
/// is used by one thread at a time.
class VNIFC_API VnIfcEntityBase : public VnIfcObject {
public:
    /// Fills `value` with the attribute's value, set or not; false, and `value` untouched, for an unknown name. Names
    /// are compared without regard to case here and below. Throws VnIfcException when the model's access mode forbids
    /// it.
    virtual bool getAttr(const VnAnsiString& name, VnIfcVariant& value) const;
    virtual ~VnIfcEntityBase();
    /// The class's record in the dictionary; null until the schema is built, and for instances without a class.
    virtual VnIfcEntityType* getInstanceType() const = 0;
    /// Converts and stores; false, and the attribute unchanged, when the name is unknown, the value does not convert,
    /// or isBeyondFile is true of the attribute's position.
    virtual bool putAttr(const VnAnsiString& name, const VnIfcVariant& value);
    /// True when the attribute of that record's name holds a value; false for null.
    virtual bool testAttr(const VnIfcAttributeDefinition* attribute) const;
    /// True when the attribute holds a value.
    virtual bool testAttr(const VnAnsiString& name) const;
    /// Puts the attribute back to its unset value.
    virtual void unsetAttr(const VnAnsiString& name);
    ///@{
    /// Reads, or writes, the parameter list (ISO 10303-21, 12.2).
    virtual VN::ErrorStatus inFields(VnSpfFilerBase* filer) = 0;
    virtual VN::ErrorStatus outFields(VnSpfFilerBase* filer) const = 0;
    ///@}
    ///@{
    /// As inFields and outFields, which they call.
    virtual VN::ErrorStatus _inFields(VnSpfFilerBase* filer);
    virtual VN::ErrorStatus _outFields(VnSpfFilerBase* filer) const;
    ///@}
    /// Enters this instance into the inverse attributes of the instances that it refers to.
    virtual void setInverseCounterParts();
    /// Does nothing here; what removes entries from inverse attributes is the model.
    virtual void resetInverseCounterParts();
    ///@{
    /// Other names of testAttr, unsetAttr, getAttr and putAttr, which they call: names are compared without regard to
    /// case in all of them.
    virtual bool testAttrCaseInsensitive(const VnAnsiString& name) const;
    virtual void unsetAttrCaseInsensitive(const VnAnsiString& name);
    virtual bool _getAttr(const VnAnsiString& name, VnIfcVariant& value) const;
    virtual bool _putAttr(const VnAnsiString& name, const VnIfcVariant& value);
    virtual bool _testAttr(const VnAnsiString& name) const;
    virtual void _unsetAttr(const VnAnsiString& name);
    ///@}
    /// Exactly of this type.
    virtual bool isInstanceOf(const VnIfcEntityType* type) const = 0;
    /// By the entity's name in any case.
    virtual bool isInstanceOf(const char* name) const = 0;
    /// Of this type or a subtype of it.
    virtual bool isKindOf(const VnIfcEntityType* type) const = 0;
    /// By the entity's name in any case.
    virtual bool isKindOf(const char* name) const = 0;
    /// Takes this instance out of the inverse attributes of the instances that it refers to.
    virtual void leaveInverseCounterParts();

    // For the model, which keeps inverse attributes.

    /// Appends the instances that this one refers to by attributes that inverse attributes mirror.
    virtual void counterParts(std::vector<VnDbObjectId>& targets) const;
    /// As setInverseCounterParts, for one of the instances that this one refers to.
    virtual void enterCounterPart(const VnDbObjectId& target);
    /// Empties this instance's inverse attributes.
    virtual void clearInverses();
    /// Takes an instance, or with null all erased ones, out of this one's inverse attributes, whatever refers to it
    /// now. True when one that can hold a single instance became empty.
    virtual bool forgetReferrer(const VnDbObjectId& referrer);
    /// Classifies the instances that the selects of this one hold (VnIfcSelect::settle), as far as they are there. True
    /// when none is left.
    virtual bool settleSelects();
    /// The globally unique identifier; null for classes that have none.
    virtual const VnIfcGUID* globalId() const noexcept;
    /// Reports what is wrong with the instance's values. Instances of one model are checked on several threads at once.
    virtual void check(VnIfcCheck& check) const;
    /// Appends the values that a UNIQUE rule of the class compares; false when one of them is unset, for then the rule
    /// does not hold for the instance.
    virtual bool uniqueValues(const void* rule, std::string& values) const;
    /// The names of the attributes of such a rule, with commas between them.
    virtual std::string uniqueAttributes(const void* rule) const;
    /// Enters what setInverseCounterParts would enter into targets that the list owns, and lists the rest; a model asks
    /// for it when several threads set inverse attributes. False when the instance can only enter everything itself.
    virtual bool listInverseCounterParts(VnIfcInverseList& list) const;
    /// Enters an entry of such a list of which this instance is the target. The order of entries does not matter.
    virtual void enterInverse(const void* inverse, const VnDbObjectId& referrer);

    /// The instance's own handle; null outside of a model.
    VnDbObjectId objectId() const noexcept { return m_id; }
    /// The model that the instance belongs to; null outside of a model.
    VnIfcModel* owningModel() const noexcept { return m_id.model(); }

    /// True when the file held something at that position of the parameter list, from 0, that its attribute cannot
    /// hold, and the attribute was not set since.
    bool keepsText(unsigned position) const noexcept;
    /// What it held there, in the form of an exchange file, which will be written back; empty when nothing is kept.
    /// Valid until the attribute is changed.
    std::string_view keptText(unsigned position) const noexcept;
    /// Everything that is kept of the parameter list: position and text, in ascending order. What follows the last
    /// parameter has the first position past the class's attributes.
    std::vector<std::pair<unsigned, std::string_view>> keptTexts() const;
    /// True when the instance was read from a file of another release, or of a draft, whose parameter list ended before
    /// that position: a value there would be a parameter that the file's own release does not have.
    bool isBeyondFile(unsigned position) const noexcept;

    // Instances that a loader makes live in its model's arena.
    ///@{
    /// Memory for an instance: from the arena of the calling thread if it has one, which then frees it, else from the
    /// heap.
    static void* operator new(std::size_t size);
    static void operator delete(void* memory) noexcept;
    ///@}

protected:
    /// An instance that belongs to no model.
    VnIfcEntityBase() noexcept = default;
    ///@{
    /// A copy belongs to no model; assignment leaves identity alone, and changes all attributes.
    VnIfcEntityBase(const VnIfcEntityBase&) noexcept {}
    VnIfcEntityBase& operator=(const VnIfcEntityBase& other) {
        if (this == &other)
            return *this;
        allTouched();
        referenceChanges();
        return *this;
    }
    ///@}

    /// To be called for every change of an attribute, so that a text kept from the file gives way to the new value.
    void touched(unsigned position) noexcept {
        if (!m_id.isNull() && m_id.slot()->has(VnIfcInstanceSlot::kHasKept))
            dropKept(position);
    }
    /// To be called before a reference changes that inverse attributes may mirror, so that erasing finds what the
    /// instance was entered into.
    void referenceChanges() {
        if (!m_id.isNull())
            rememberCounterParts();
    }
    /// As touched, for all attributes.
    void allTouched() noexcept {
        if (!m_id.isNull() && m_id.slot()->has(VnIfcInstanceSlot::kHasKept))
            dropAllKept();
    }

private:
    friend class VnIfcModel;
    void dropKept(unsigned position) noexcept;
    void dropAllKept() noexcept;
    void rememberCounterParts();

    VnDbObjectId m_id;
};

static_assert(sizeof(VnIfcEntityBase) == 16);

} // namespace VN_SDAI
