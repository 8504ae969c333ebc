#pragma once
#include <vnifc/Model.h>
#include <vnifc/Units.h>

#include <memory>
#include <string>
#include <vector>

namespace vnifc {

/// Something to be known of an instance, by a text that a person writes:
/// - `id`, `class`: number and entity
/// - an attribute by its name: `Name`, `OverallWidth`
/// - a property by the names of set and property: `Pset_WallCommon.FireRating`, either of them also a regular
///   expression, `/Pset_.*Common/.IsExternal`, or in double quotes
/// - `type`, `parent`, `container`, `storey`, `building`, `site`; `location`: the container and what contains that
/// - `material`, `classification`, `group`, `layer`, of which an object may have several
/// Keywords count before attributes and are taken in any case, as are attributes.
class VNIFC_LAYER_API Facet {
public:
    /// Throws SelectorError, and Error for a regular expression in a build without them.
    explicit Facet(std::string_view text);
    ~Facet();
    Facet(Facet&&) noexcept;
    Facet& operator=(Facet&&) noexcept;

    /// As it was written.
    const std::string& text() const noexcept;
    /// All that is known of the instance: none, or several.
    std::vector<Value> values(const Instance& instance) const;
    /// The one value; a list of several, null for none. An instance is a value too: the storey, the type.
    Value value(const Instance& instance) const;
    /// In words for a table: instances by their names, several values with commas, nothing for none.
    std::string words(const Instance& instance) const;
    /// The one number with its unit; nothing where there is none or several.
    std::optional<Quantity> quantity(const Instance& instance) const;
    /// Throws SelectorError when the facet is an attribute that no entity of the model's release has.
    void check(const Model& model) const;

    struct Impl;
    /// For the library's own parts: takes a facet from the beginning of a text and tells how much it took.
    static Facet takeFrom(std::string_view selector, std::size_t& position);
    const Impl& impl() const noexcept { return *m_impl; }

private:
    explicit Facet(std::unique_ptr<Impl> impl) noexcept;
    std::unique_ptr<Impl> m_impl;
};

} // namespace vnifc
