#pragma once
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcRelease.h>
#include <VnRx/VnModule.h>

#include <memory>
#include <optional>

namespace VN_SDAI {

/// How a file is opened: all that reading takes, and the release.
struct VnIfcOpenOptions : VnIfcReadOptions {
    /// The release whose classes are taken, in any case ("IFC4"); empty: the one that FILE_SCHEMA asks for.
    std::string_view release;
};

/// A model together with the use of the schema module that its classes are in. Move-only. A host that opens many small
/// files keeps a VnModule of its own for each release that it expects: the schema is built when the first use of a
/// module begins, and taken away when the last one ends.
class VNIFC_API VnIfcFile {
public:
    /// Without a model.
    VnIfcFile() noexcept = default;
    ///@{
    /// The model stays where it is, so that pointers to it and handles stay good; a model that is assigned over goes
    /// before its module.
    VnIfcFile(VnIfcFile&&) noexcept = default;
    VnIfcFile& operator=(VnIfcFile&& other) noexcept;
    ///@}
    ~VnIfcFile() = default;

    /// What reading came to; without success there is no model.
    const VnIfcFileResult& result() const noexcept { return m_result; }
    /// True when there is a model.
    explicit operator bool() const noexcept { return m_model != nullptr; }

    ///@{
    /// There must be a model.
    VnIfcModel& model() noexcept { return *m_model; }
    const VnIfcModel& model() const noexcept { return *m_model; }
    ///@}
    /// The use of the module; good as long as the model.
    const VnModule& module() const noexcept { return *m_module; }
    /// The release of the classes; null without a model.
    const VnIfcRelease* release() const noexcept { return m_release; }

private:
    friend VNIFC_API VnIfcFile vnOpenFile(const std::filesystem::path&, const VnIfcOpenOptions&);
    friend VNIFC_API VnIfcFile vnOpenText(std::string_view, const VnIfcOpenOptions&);
    friend VNIFC_API VnIfcFile vnCreateFile(std::string_view);

    template <class Read>
    static VnIfcFile open(const VnIfcOpenOptions& options, Read read);
    const VnIfcSchema* choose(const VnIfcHeader& header, std::string_view wanted);

    const VnIfcRelease* m_release = nullptr;
    std::optional<VnModule> m_module; ///< outlives the model
    std::unique_ptr<VnIfcModel> m_model;
    VnIfcFileResult m_result;
};

/// Reads an exchange file into a model of the release that its FILE_SCHEMA asks for (vnChooseRelease), whose module is
/// loaded for that; the file is read once, so that it may be a pipe. A finding says which classes were taken where
/// FILE_SCHEMA does not have the release's own name: a remark, or a warning when its entities differ, when it is not
/// known, and when `options.release` insists on another release. The result says when the file cannot be read and when
/// the release is not known or not installed.
VNIFC_API VnIfcFile vnOpenFile(const std::filesystem::path& path, const VnIfcOpenOptions& options = {});
/// As vnOpenFile, from memory.
VNIFC_API VnIfcFile vnOpenText(std::string_view text, const VnIfcOpenOptions& options = {});
/// A new model of a release, by its name in any case, with the three header entries that the standard requires. The
/// result tells when the release is not known or not installed.
VNIFC_API VnIfcFile vnCreateFile(std::string_view release);

/// Loads the module of a release. Throws std::runtime_error when it is not installed; the message names the package.
VNIFC_API VnModule vnLoadModule(const VnIfcRelease& release);

} // namespace VN_SDAI
