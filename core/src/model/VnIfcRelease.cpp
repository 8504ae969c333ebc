#include <VnIfcCore/VnAscii.h>
#include <VnIfcCore/VnIfcRelease.h>

#include <algorithm>

namespace VN_SDAI {

namespace {

struct Match {
    const VnIfcRelease* release = nullptr;
    const VnIfcServedName* name = nullptr;
};

/// An exact name counts before the beginning of names, a longer beginning before a shorter one.
bool isBetter(const VnIfcServedName& name, const Match& than) noexcept {
    if (!than.name || name.isPrefix != than.name->isPrefix)
        return !than.name || !name.isPrefix;
    return name.text.size() > than.name->text.size();
}

/// The name of a schema without the blanks around it and the object identifier that may follow it.
std::string_view bareName(std::string_view schema) noexcept {
    const std::size_t first = std::min(schema.find_first_not_of(' '), schema.size());
    schema.remove_prefix(first);
    return schema.substr(0, schema.find_first_of(" {"));
}

Match serverOf(std::string_view schema) noexcept {
    Match best;
    for (const VnIfcRelease& release : vnIfcReleases())
        for (const VnIfcServedName& name : release.serves) {
            const std::string_view compared = name.isPrefix ? schema.substr(0, name.text.size()) : schema;
            if (vnEqualNoCase(compared, name.text) && isBetter(name, best))
                best = {&release, &name};
        }
    return best;
}

VnIfcReleaseFit fitOf(const Match& match, std::string_view schema) noexcept {
    if (vnEqualNoCase(schema, match.release->name))
        return VnIfcReleaseFit::kExact;
    return match.name->differs ? VnIfcReleaseFit::kDiffers : VnIfcReleaseFit::kServed;
}

} // namespace

const VnIfcRelease* vnFindRelease(std::string_view name) noexcept {
    const auto releases = vnIfcReleases();
    const auto found = std::ranges::find_if(releases, [&](const auto& each) { return vnEqualNoCase(each.name, name); });
    return found == releases.end() ? nullptr : &*found;
}

VnIfcReleaseChoice vnChooseRelease(std::span<const std::string> schemas) {
    for (const std::string& schema : schemas) {
        const std::string_view name = bareName(schema);
        if (const Match match = serverOf(name); match.release)
            return {match.release, fitOf(match, name), schema};
    }
    return {&vnIfcReleases().back(), VnIfcReleaseFit::kUnknown, schemas.empty() ? std::string() : schemas.front()};
}

} // namespace VN_SDAI
