#pragma once
#include <vnifc/Ranges.h>

#include <VnIfcCore/VnIfcFile.h>

#include <filesystem>
#include <functional>
#include <initializer_list>
#include <memory>
#include <span>

namespace vnifc {

/// What was noticed in a file or a model: severity, stable code, place, instance, attribute, found, expected.
using Finding = VN_SDAI::VnIfcDiagnostic;

struct OpenOptions {
    /// The release whose classes are taken, in any case ("IFC4"); empty: the one that FILE_SCHEMA asks for.
    std::string release = {};
    /// Is told each finding as it is made, in the order of the file.
    std::function<void(const Finding&)> findings = {};
    /// So many findings are kept with the model; beyond that they are only counted. A broken file can have millions.
    std::size_t keptFindings = 10000;
    /// Is told now and then how far reading has come, from 0 to 1; answering false cancels it.
    std::function<bool(double)> progress = {};
    unsigned threads = 0;  ///< 0: as many as the machine has
    bool places = false;   ///< remember where each instance stands in the file
    bool strict = false;   ///< what contradicts standard or schema is an error, even where nothing is lost
    std::string name = {}; ///< how findings call the input; empty: its path
};

struct SaveOptions {
    std::function<bool(double)> progress = {}; ///< as in OpenOptions
    unsigned threads = 0;
};

/// The instances of a file, of whatever release that is, and the schema module that their classes are in. Move-only;
/// instances stay good when it is moved. Several models of several releases may live at once; one thread at a time
/// uses a model.
class VNIFC_LAYER_API Model {
public:
    /// Takes what the core has read or created. Throws FileError when it holds no model.
    explicit Model(VN_SDAI::VnIfcFile file);
    Model(Model&&) noexcept;
    Model& operator=(Model&&) noexcept;
    ~Model();

    /// Writes an exchange file: complete, or on failure, which throws FileError, as it was before.
    void save(const std::filesystem::path& path, const SaveOptions& options = {}) const;
    /// The exchange file as text.
    std::string text() const;

    /// The release of the classes: "IFC4".
    std::string_view release() const noexcept;
    /// What was noticed while reading, in the order of the file; as many as the options wanted to be kept.
    std::span<const Finding> findings() const noexcept;
    /// How many there were.
    std::uint64_t errors() const noexcept;
    std::uint64_t warnings() const noexcept;

    /// A new instance of an entity, with attributes if given; one that has a GlobalId gets one. Throws NotFound for an
    /// unknown entity or attribute, BadValue for a value that does not fit and for an abstract entity.
    Instance create(std::string_view entity, std::initializer_list<std::pair<std::string_view, Value>> attributes = {});
    /// Copies an instance of this or another model. Within a model the copy refers to what the source refers to; from
    /// another model everything that the source refers to comes along. Throws NotFound when the release lacks the
    /// entity.
    Instance copy(const Instance& source);
    /// Copies instances of another model together with what they refer to, each once.
    std::vector<Instance> copy(std::span<const Instance> sources);
    /// Takes an instance out, and every reference to it: an attribute becomes unset, a list or set loses the element.
    /// What only it used stays; remove in Change.h takes that out too.
    void erase(const Instance& instance);

    /// The number of instances.
    std::size_t size() const noexcept;
    /// The instance of that number; throws NotFound.
    Instance operator[](std::uint64_t id) const;
    /// The instance that is meant by "#12", "12" or a GlobalId; throws NotFound. A GlobalId is looked for in all
    /// instances.
    Instance at(std::string_view address) const;
    /// As the two above; no instance in place of an exception.
    Instance find(std::uint64_t id) const noexcept;
    Instance find(std::string_view address) const;
    /// The one project, or the first of several; no instance where there is none.
    Instance project() const;

    /// All instances, ascending.
    InstanceRange all() const;
    /// Those of an entity and, unless `exact`, of its subtypes, ascending. Throws NotFound for a name that neither the
    /// release nor the file has.
    InstanceRange instances(std::string_view entity, bool exact = false) const;
    /// True when the release has an entity of that name.
    bool hasEntity(std::string_view entity) const noexcept;
    /// Looks the name of an explicit or inverse attribute up. Throws NotFound when there is no such entity or
    /// attribute.
    AttributeKey key(std::string_view entity, std::string_view attribute) const;

    /// The core's model, for programs that work with typed classes too. Who changes it through the core says so by
    /// changed().
    VN_SDAI::VnIfcModel& core() noexcept;
    const VN_SDAI::VnIfcModel& core() const noexcept;
    /// Drops what was derived from the instances: who refers to whom, inverse attributes, lists by entity.
    void changed() noexcept;
    /// The instance of a handle of the core's model.
    Instance wrap(const VN_SDAI::VnDbObjectId& handle) const noexcept { return {handle, m_state.get()}; }

private:
    friend VNIFC_LAYER_API Model open(const std::filesystem::path&, const OpenOptions&);
    friend VNIFC_LAYER_API Model openText(std::string_view, const OpenOptions&);

    std::unique_ptr<detail::ModelState> m_state;
};

/// Reads an exchange file into a model of the release that it names. Throws FileError when nothing can be read, and
/// when the release is not known or not installed; what is wrong within the file is a finding.
VNIFC_LAYER_API Model open(const std::filesystem::path& path, const OpenOptions& options = {});
/// As open, from memory.
VNIFC_LAYER_API Model openText(std::string_view text, const OpenOptions& options = {});
/// A new model of a release, by its name in any case. Throws FileError when that is not known or not installed.
VNIFC_LAYER_API Model create(std::string_view release);

} // namespace vnifc
