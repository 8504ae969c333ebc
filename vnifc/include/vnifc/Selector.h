#pragma once
#include <vnifc/Model.h>

#include <memory>
#include <string_view>

namespace vnifc {

/// One text that picks instances of a model:
///
///     IfcWall, IfcSlab                          of any of these classes, subtypes included
///     IfcWall, ! IfcWallStandardCase            but not of that one
///     2XQ$n5SLP5MBLyL442paFx, #12               by GlobalId or number
///     IfcDoor, Name=/D[0-9]+/, OverallHeight>2.1m
///     Pset_WallCommon.FireRating=EI60 + IfcSlab
///
/// A comma means and, between classes, GlobalIds and numbers or; `+` joins groups; `!` negates what follows. A group
/// without class, GlobalId and number is about all objects and types (IfcObjectDefinition). A condition is a facet
/// (Facet.h), an operator out of = != > >= < <= *= !*= (the last two: contains, and does not), and a value: a word up
/// to the next comma or plus sign; text in double quotes, in which a backslash goes before a quote; a regular
/// expression between slashes, which has to match the whole text; NULL; a number, to which a unit may be added, and the
/// comparison is made in SI then. Of several values one has to fulfil the condition, and none may have what != and !*=
/// exclude.
class VNIFC_LAYER_API Selector {
public:
    /// Throws SelectorError, and Error for a regular expression in a build without them.
    explicit Selector(std::string_view text);
    ~Selector();
    Selector(Selector&&) noexcept;
    Selector& operator=(Selector&&) noexcept;

    /// The instances that it picks, ascending. Throws SelectorError for a class or attribute that neither the model's
    /// release nor the model has, and NotFound for a GlobalId or number that is not there.
    InstanceRange select(const Model& model) const;

    struct Impl;

private:
    std::unique_ptr<const Impl> m_impl;
};

/// Selector(text).select(model).
VNIFC_LAYER_API InstanceRange select(const Model& model, std::string_view selector);

/// True when this build has regular expressions.
VNIFC_LAYER_API bool hasRegularExpressions() noexcept;

} // namespace vnifc
