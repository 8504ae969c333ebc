#include "LoadedFile.h"
#include "Messages.h"
#include "TypedValue.h"
#include "WriteModel.h"

#include <VnIfcCore/VnIfcGUID.h>

#include <fmt/format.h>

#include <set>

namespace vnifc::tool {

using namespace VN_SDAI;

namespace {

/// Changes a model as a user asks for it, and says what cannot be done.
class Editor {
public:
    Editor(const LoadedFile& file, bool quiet) noexcept : m_file(file), m_quiet(quiet) {}

    /// "#12.Name=Some name".
    void set(std::string_view change) {
        const std::size_t equals = change.find('=');
        if (equals == change.npos)
            return refuse(fmt::format("expected #ID.NAME=VALUE, found {}", change));
        attempt(change.substr(0, equals), [&](VnIfcEntityBase& instance, const Attribute& attribute) {
            TypedValue(instance, attribute, change.substr(equals + 1)).putInto(instance);
            warnOfGlobalId(instance, attribute);
        });
    }
    /// "#12.Name".
    void unset(std::string_view place) {
        attempt(place,
                [](VnIfcEntityBase& instance, const Attribute& attribute) { instance.unsetAttr(*attribute.name); });
    }
    unsigned refused() const noexcept { return m_refused; }

private:
    template <class Change>
    void attempt(std::string_view place, Change change) try {
        const std::size_t dot = place.find('.');
        VnIfcEntityBase& instance = instanceAt(m_file.model(), place.substr(0, dot));
        const std::string_view name = dot == place.npos ? "" : place.substr(dot + 1);
        const VnIfcEntityType* type = instance.getInstanceType();
        const Attribute* attribute = type ? findAttribute(*type, name) : nullptr;
        if (!attribute)
            return refuse(fmt::format("{} has no attribute \"{}\"", keywordOf(instance), name));
        if (attribute->isDerived)
            return refuse(fmt::format("{} is derived from other attributes", placeOf(instance, *attribute)));
        if (instance.isBeyondFile(attribute->position))
            return refuse(fmt::format("{}: the file is of another release, whose instances have no such parameter",
                                      placeOf(instance, *attribute)));
        if (m_file.hasUnclearList(instance.objectId().number()))
            return refuse(fmt::format("{}: the instance's parameter list is broken or too long in the file, so that "
                                      "its value may stand elsewhere in what is kept as text",
                                      placeOf(instance, *attribute)));
        if (!m_changed.insert({instance.objectId().number(), attribute->position}).second)
            return refuse(fmt::format("{} is to be changed twice", placeOf(instance, *attribute)));
        change(instance, *attribute);
    } catch (const Failure& failure) {
        refuse(failure.what());
    }

    void warnOfGlobalId(const VnIfcEntityBase& instance, const Attribute& attribute) const {
        const VnIfcGUID* id = attribute.position == 0 ? instance.globalId() : nullptr;
        if (id && !id->isUnset() && !id->isValid() && !m_quiet)
            say(fmt::format("warning: {} is no globally unique identifier: {}", placeOf(instance, attribute),
                            id->view()));
    }

    void refuse(const std::string& reason) {
        ++m_refused;
        say(reason);
    }

    const LoadedFile& m_file;
    bool m_quiet;
    std::set<std::pair<std::uint64_t, unsigned>> m_changed;
    unsigned m_refused = 0;
};

} // namespace

ExitCode edit(const ReadFlags& flags, const std::string& target, const Changes& changes) {
    const LoadedFile file(flags, {.unclearLists = true});
    Editor editor(file, flags.quiet);
    for (const std::string& change : changes.set)
        editor.set(change);
    for (const std::string& place : changes.unset)
        editor.unset(place);
    if (editor.refused() > 0)
        throw Failure(kWrongUse,
                      fmt::format("{} cannot be made; nothing was written",
                                  editor.refused() == 1 ? "a change" : fmt::format("{} changes", editor.refused())));
    writeModel(file.model(), target, flags);
    return file.exitCode();
}

} // namespace vnifc::tool
