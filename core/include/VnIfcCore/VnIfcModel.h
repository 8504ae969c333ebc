#pragma once
#include <VnIfcCore/VnDbObjectId.h>
#include <VnIfcCore/VnIfcDiagnostic.h>
#include <VnIfcCore/VnIfcEntityBase.h>
#include <VnIfcCore/VnIfcHeader.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string_view>

namespace VN_SDAI {

class VnIfcGUID;

/// Called now and then with how far a long operation has come, from 0 to 1; returning false cancels it.
using VnIfcProgress = std::function<bool(double)>;

/// How a file is read.
struct VnIfcReadOptions {
    VnIfcDiagnosticSink diagnostics; ///< none: findings are only counted
    /// Called on the thread that reads the file; none: the operation cannot be cancelled.
    VnIfcProgress progress;
    unsigned threads = 0;  ///< 0: as many as the machine has
    bool inverses = true;  ///< set inverse attributes when the file has been read
    bool places = false;   ///< remember where each instance stands in the file
    bool strict = false;   ///< what contradicts standard or schema is an error, even where nothing is lost; mandatory
                           ///< attributes that are unset are reported
    std::string_view name; ///< how diagnostics call the input; empty: its path
    /// Bytes of text in which one thread looks for instances at a time; 0 leaves it to the reader. The result does not
    /// depend on it; tests make it small so that borders between pieces fall everywhere.
    std::size_t piece = 0;
};

/// How a file is written.
struct VnIfcWriteOptions {
    /// What cannot be written as it is held: "foreign-reference" and "not-finite" (errors, written "$"), "no-value" (a
    /// warning: a select whose member has none, written "$") and "text" (a warning: bytes that are no exchange text,
    /// written as they are). None: findings are only counted.
    VnIfcDiagnosticSink diagnostics;
    /// None: the operation cannot be cancelled.
    VnIfcProgress progress;
    unsigned threads = 0; ///< 0: as many as the machine has
    /// Writes the strings that are no exchange text (ISO 10303-21, 6.4.3), raw UTF-8 or a backslash that begins no
    /// directive say, encoded as vnEncodeText does.
    bool encodeText = false;
};

/// What an operation on a file came to.
struct [[nodiscard]] VnIfcFileResult {
    /// VN::eOk, or why nothing was read or written.
    VN::ErrorStatus status = VN::eOk;
    std::string message; ///< why the status is no success
    /// Of the file's text that was read or written.
    std::uint64_t bytes = 0;
    ///@{
    /// How many findings of that severity there were, with and without a sink. They do not make the operation a
    /// failure.
    std::uint64_t errors = 0;
    std::uint64_t warnings = 0;
    ///@}

    /// True for success, whatever was found.
    explicit operator bool() const noexcept { return status == VN::eOk; }
};

/// A population of instances of one schema (ISO 10303-22, SDAI-model). Owns its instances; handles point into it and
/// die with it. One thread at a time changes a model.
class VNIFC_API VnIfcModel {
public:
    /// The schema must outlive the model; null throws std::invalid_argument.
    explicit VnIfcModel(const VnIfcSchema* schema);
    ~VnIfcModel();
    VnIfcModel(const VnIfcModel&) = delete;
    VnIfcModel& operator=(const VnIfcModel&) = delete;
    ///@{
    /// Instances and handles stay where they are and belong to the new model. What was moved from can only be destroyed
    /// or assigned to.
    VnIfcModel(VnIfcModel&& other) noexcept;
    VnIfcModel& operator=(VnIfcModel&& other) noexcept;
    ///@}

    /// The schema of the instances, not owned; never null.
    const VnIfcSchema* schema() const noexcept;
    ///@{
    /// What access by name is allowed: getAttr, testAttr, putAttr and unsetAttr of the instances throw VnIfcException
    /// otherwise, and so do the properties of whole instances, which go by name. Nothing else is guarded: accessors of
    /// the classes, property objects of attributes, create, append, copy, erase and clear work in every mode.
    SdaiAccessMode mode() const noexcept { return m_mode; }
    void setMode(SdaiAccessMode mode) noexcept { m_mode = mode; }
    ///@}
    ///@{
    /// The header section, owned by the model. Empty for a new model, which is written with the entries of
    /// VnIfcHeader::standard.
    VnIfcHeader& header() noexcept;
    const VnIfcHeader& header() const noexcept;
    ///@}

    /// Creates an instance of the named entity (in any case) under the next free number; null for an
    /// unknown name and for an abstract entity.
    VnDbObjectId create(std::string_view entity);
    /// Takes an instance that the host made. Throws std::invalid_argument for null, for an instance whose class is of
    /// another schema, and before the schema of its class is initialised.
    VnDbObjectId append(std::unique_ptr<VnIfcEntityBase> instance);
    /// Creates an instance of class E, owned by the model. Throws as append does.
    template <class E>
    E* create() {
        auto instance = std::make_unique<E>();
        E* result = instance.get();
        append(std::move(instance));
        return result;
    }
    ///@{
    /// Copies an instance, from this model or another one. Within a model the copy refers to what the source refers to;
    /// from another model everything that the source refers to is copied too, unless `copies` names its counterpart
    /// already; it is extended. Between schemas entities and attributes are matched by their names alone: a value whose
    /// attribute this schema lacks stays behind, and an instance whose entity it lacks becomes one without a class.
    /// Null when that holds for the source itself.
    VnDbObjectId copy(const VnDbObjectId& source);
    VnDbObjectId copy(const VnDbObjectId& source, std::vector<std::pair<VnDbObjectId, VnDbObjectId>>& copies);
    ///@}
    /// As copy; reports what becomes of an instance whose schema is another one. Attributes go by name; those that the
    /// source does not have are unset ("mandatory" where this schema demands a value), those that the copy does not
    /// have are left out ("no-attribute"), and values that do not fit are kept as text, with the codes that reading
    /// has. `instance` in a finding is the copy.
    VnDbObjectId copy(const VnDbObjectId& source, std::vector<std::pair<VnDbObjectId, VnDbObjectId>>& copies,
                      const VnIfcDiagnosticSink& diagnostics);
    /// Erases an instance: it is no longer found or written, its handle opens to null, and it leaves the inverse
    /// attributes of others, also of those that it referred to before it was changed. An inverse attribute that holds a
    /// single instance goes to another one that refers by it, if there is one. References to the instance stay where
    /// they are; they are written as unset. False if it is not of this model.
    ///
    /// What was changed through pointers that getAttr gave is not known of: set the inverse attributes anew first.
    bool erase(const VnDbObjectId& handle);
    /// Erases several instances, in any order, in a time that grows with the number of the instances and the size of
    /// the inverse attributes that they leave; one by one, each has to close the gap that it leaves there. Returns how
    /// many there were to erase.
    std::size_t erase(std::span<const VnDbObjectId> handles);
    /// Gives back all instances and the header.
    void clear();

    /// Number of instances, without erased ones.
    std::size_t count() const noexcept;
    /// The instance of that number; null when there is none.
    VnDbObjectId find(std::uint64_t number) const noexcept;
    /// The instance of lowest number with that GlobalId; null when there is none. Looks at every instance.
    VnDbObjectId findByGlobalId(const VnIfcGUID& globalId) const;
    /// Calls `visit` for each instance in ascending order of numbers; instances may be created and erased meanwhile,
    /// those created are not visited.
    void forEach(const std::function<void(VnIfcEntityBase&)>& visit) const;
    /// As forEach, for instances of one entity type, with or without its subtypes.
    void forEach(const VnIfcEntityType* type, bool withSubtypes,
                 const std::function<void(VnIfcEntityBase&)>& visit) const;
    /// Handles of all instances in ascending order of numbers.
    std::vector<VnDbObjectId> instances() const;
    /// Handles of the instances of one entity type, with or without its subtypes, in ascending order of numbers.
    std::vector<VnDbObjectId> instancesOf(const VnIfcEntityType* type, bool withSubtypes = true) const;

    /// The line of one instance, with kept text and without a line end: "#12=IFCWALL(...);". Empty for a handle that
    /// opens to null.
    std::string instanceText(const VnDbObjectId& handle) const;
    /// Line and column, from 1, of an instance in the file that it was read from; false when they are not known.
    bool place(const VnDbObjectId& handle, std::uint64_t& line, std::uint64_t& column) const noexcept;

    /// Sets the inverse attributes of all instances: empties them, and enters every instance, in ascending order of
    /// numbers, into those of the instances that it refers to. Setters do not touch inverse attributes, so that they
    /// are to be set anew after changes. Several threads ask instances for VnIfcEntityBase::listInverseCounterParts,
    /// one alone for setInverseCounterParts; the result is the same. `threads` 0: as many as the machine has.
    void setInverseCounterParts(unsigned threads = 0);

    /// Reads an exchange file (ISO 10303-21) into this model, which must be empty.
    VnIfcFileResult readFile(const std::filesystem::path& path, const VnIfcReadOptions& options = {});
    /// As readFile, from memory.
    VnIfcFileResult readText(std::string_view text, const VnIfcReadOptions& options = {});
    /// Writes the header and all instances in ascending order. The file is complete or, on failure, as it was before.
    VnIfcFileResult writeFile(const std::filesystem::path& path, const VnIfcWriteOptions& options = {}) const;
    /// As writeFile, into memory. `result`, if given, receives what writeFile returns.
    std::string writeText(const VnIfcWriteOptions& options = {}, VnIfcFileResult* result = nullptr) const;

    /// The model's contents, known to the core alone.
    struct Data;
    /// For the core's own parts.
    Data& data() const noexcept { return *m_data; }

private:
    friend class VnIfcEntityBase;
    friend class VnIfcFile;
    /// For a file whose schema is known when its header is read.
    struct WithoutSchema {};
    explicit VnIfcModel(WithoutSchema);
    void adopt(VnIfcInstanceSlot* slot, VnIfcEntityBase* instance, bool inArena) const noexcept;
    friend struct Data;

    SdaiAccessMode m_mode = sdaiReadWrite;
    std::unique_ptr<Data> m_data;
};

/// An instance that has no class: its keyword is unknown to the schema, or it is a complex one (ISO 10303-21, 12.2.5).
/// Kept as text and written back as it came.
class VNIFC_API VnIfcForeignInstance final : public VnIfcEntityBase {
public:
    /// Of a complex instance the keyword is empty and the parameters hold all its parts. Without `isList` it is text
    /// that could not even be taken apart that far.
    VnIfcForeignInstance(VnAnsiString keyword, VnAnsiString parameters, bool isList = true) noexcept
        : m_keyword(std::move(keyword)), m_parameters(std::move(parameters)), m_isList(isList) {}

    /// As in the file; empty for a complex instance.
    const VnAnsiString& keyword() const noexcept { return m_keyword; }
    /// False when the text is not the inside of a parameter list but everything after "#12=".
    bool isList() const noexcept { return m_isList; }
    /// What stands between the outer parentheses.
    const VnAnsiString& parameters() const noexcept { return m_parameters; }
    /// Replaces the text, which is written as it is and checked by nobody.
    void setParameters(VnAnsiString parameters) { m_parameters = std::move(parameters); }

    VnIfcEntityType* getInstanceType() const override { return nullptr; }
    VN::ErrorStatus inFields(VnSpfFilerBase*) override { return VN::eNotHandled; }
    /// Writes the text as it is.
    VN::ErrorStatus outFields(VnSpfFilerBase* filer) const override;
    bool isInstanceOf(const VnIfcEntityType*) const override { return false; }
    /// Compares with the keyword, in any case.
    bool isInstanceOf(const char*) const override;
    bool isKindOf(const VnIfcEntityType*) const override { return false; }
    bool isKindOf(const char* name) const override { return isInstanceOf(name); }

private:
    VnAnsiString m_keyword;
    VnAnsiString m_parameters;
    bool m_isList;
};

} // namespace VN_SDAI
