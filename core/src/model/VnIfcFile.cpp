#include "../exchange/SpfLoader.h"

#include <VnIfcCore/VnIfcFile.h>
#include <VnIfcCore/VnIfcSchema.h>

#include <stdexcept>

namespace VN_SDAI {

namespace {

/// What keeps a file from being read in a release.
class NoRelease : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

const VnIfcRelease& releaseNamed(std::string_view name) {
    if (const VnIfcRelease* release = vnFindRelease(name))
        return *release;
    std::string known;
    for (const VnIfcRelease& release : vnIfcReleases())
        known.append(known.empty() ? "" : ", ").append(release.name);
    throw NoRelease("expected one of the releases " + known + ", found \"" + std::string(name) + '"');
}

VnModule use(const VnIfcRelease& release) {
    try {
        return vnLoadModule(release);
    } catch (const std::runtime_error& failure) {
        throw NoRelease(failure.what());
    }
}

} // namespace

VnModule vnLoadModule(const VnIfcRelease& release) {
    try {
        return VnModule::load(release.module);
    } catch (const VnModuleError& error) {
        std::string message = "the classes of " + std::string(release.name);
        if (error.isMissing())
            message.append(" are not installed (package ").append(release.package).append(")");
        else
            message.append(" cannot be used");
        throw VnModuleError(message.append(": ").append(error.what()), error.isMissing());
    }
}

VnIfcFile& VnIfcFile::operator=(VnIfcFile&& other) noexcept {
    if (this == &other)
        return *this;
    m_model.reset(); // before its module
    m_module = std::move(other.m_module);
    m_model = std::move(other.m_model);
    m_release = other.m_release;
    m_result = std::move(other.m_result);
    return *this;
}

const VnIfcSchema* VnIfcFile::choose(const VnIfcHeader& header, std::string_view wanted) {
    m_release = wanted.empty() ? vnChooseRelease(header.schemas()).release : &releaseNamed(wanted);
    m_module.emplace(use(*m_release));
    return m_module->schema();
}

template <class Read>
VnIfcFile VnIfcFile::open(const VnIfcOpenOptions& options, Read read) {
    VnIfcFile file;
    file.m_model.reset(new VnIfcModel(VnIfcModel::WithoutSchema{}));
    try {
        file.m_result =
            read(*file.m_model, [&](const VnIfcHeader& header) { return file.choose(header, options.release); });
    } catch (const NoRelease& reason) {
        file.m_result.status = VN::eNotFound;
        file.m_result.message = reason.what();
    }
    if (!file.m_result) {
        file.m_model.reset();
        file.m_module.reset();
        file.m_release = nullptr;
    }
    return file;
}

VnIfcFile vnOpenFile(const std::filesystem::path& path, const VnIfcOpenOptions& options) {
    return VnIfcFile::open(options, [&](VnIfcModel& model, const SpfSchemaChoice& choose) {
        return spfReadFile(model, path, options, choose);
    });
}

VnIfcFile vnOpenText(std::string_view text, const VnIfcOpenOptions& options) {
    return VnIfcFile::open(options, [&](VnIfcModel& model, const SpfSchemaChoice& choose) {
        return spfReadText(model, text, options, choose);
    });
}

VnIfcFile vnCreateFile(std::string_view release) {
    VnIfcFile file;
    try {
        file.m_release = &releaseNamed(release);
        file.m_module.emplace(use(*file.m_release));
        file.m_model = std::make_unique<VnIfcModel>(file.m_module->schema());
        file.m_model->header() = VnIfcHeader::standard(file.m_release->name, "", VnIfcHeader::timeStamp());
    } catch (const NoRelease& reason) {
        file.m_release = nullptr;
        file.m_result.status = VN::eNotFound;
        file.m_result.message = reason.what();
    }
    return file;
}

} // namespace VN_SDAI
