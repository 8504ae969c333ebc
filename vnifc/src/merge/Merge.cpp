#include "../compare/Digests.h"
#include "../whole/Living.h"
#include "../whole/Targets.h"

#include <vnifc/Merge.h>
#include <vnifc/Relations.h>
#include <vnifc/Units.h>

#include <VnIfcCore/VnIfcCopy.h>
#include <VnIfcCore/VnIfcGUID.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace vnifc {

using namespace VN_SDAI;
using namespace detail;

namespace {

// Files write the factor of a degree with as few digits as 0.0174533.
constexpr double kDigits = 1e-6;

Instance projectOf(const Model& model) {
    const std::vector<Instance> projects = model.instances("IfcProject").toVector();
    if (projects.size() != 1)
        throw BadValue("expected one IfcProject, found " + std::to_string(projects.size()));
    return projects.front();
}

std::vector<Instance> listOf(const Instance& instance, const char* attribute) {
    return instance ? instance[attribute].valueOr(std::vector<Instance>()) : std::vector<Instance>();
}

Instance oneOf(const Instance& instance, const char* attribute) { return instance[attribute].valueOr(Instance()); }

/// "LENGTHUNIT"; of money the entity.
std::string kindOf(const Instance& unit) {
    return unit.has("UnitType") ? unit["UnitType"].valueOr(std::string()) : std::string(unit.type());
}

bool isSameUnit(const Instance& left, const Instance& right) {
    if (left.is("IfcMonetaryUnit") || right.is("IfcMonetaryUnit"))
        return signOf(left) == signOf(right);
    try {
        const Unit a(left);
        const Unit b(right);
        const auto isClose = [](double x, double y) { return std::abs(x - y) <= kDigits * std::abs(x); };
        return isClose(a.factor(), b.factor()) && isClose(a.offset(), b.offset()) && a.dimension() == b.dimension();
    } catch (const BadValue&) {
        return left.name() == right.name(); // context-dependent ones have nothing but a name
    }
}

class Merger {
public:
    Merger(Model& target, const Model& other, const MergeOptions& options)
        : m_target(target), m_other(other), m_options(options), m_here(*target.wrap({}).state()),
          m_there(*other.wrap({}).state()), m_project(projectOf(target)), m_otherProject(projectOf(other)),
          m_roster(m_here.model()), m_otherRoster(m_there.model()), m_digests(m_here, m_roster, {}),
          m_otherDigests(m_there, m_otherRoster, {}) {
        if (target.release() != other.release())
            throw BadValue("it is of " + std::string(other.release()) + ", expected " + std::string(target.release()) +
                           ": convert it first");
        compareUnits();
    }

    MergeResult run() {
        standIn(m_otherProject, m_project);
        if (m_options.equalStoreys)
            matchPlaces(m_otherProject, m_project);
        matchContexts();
        matchObjects();
        const std::size_t before = m_target.size();
        m_result.shared = m_copies.size();
        if (!vnCopyInstances(m_here.model(), sources(), m_copies))
            throw Error("an instance of the other model is not there: this is a fault of the library");
        m_target.changed();
        for (std::size_t i = m_result.shared; i < m_copies.size(); ++i)
            settle(m_other.wrap(m_copies[i].first), m_target.wrap(m_copies[i].second));
        addToProject();
        m_target.changed();
        m_result.added = m_target.size() - before;
        return m_result;
    }

private:
    void compareUnits() {
        std::map<std::string, Instance> units;
        for (const Instance& unit : listOf(oneOf(m_project, "UnitsInContext"), "Units"))
            units.emplace(kindOf(unit), unit);
        for (const Instance& unit : listOf(oneOf(m_otherProject, "UnitsInContext"), "Units")) {
            const auto found = units.find(kindOf(unit));
            if (found == units.end())
                m_newUnits.push_back(unit);
            else if (!isSameUnit(found->second, unit))
                throw BadValue("its unit of kind " + found->first + " is " + signOf(unit) + ", expected " +
                               signOf(found->second) + ": values in different units are not mixed");
        }
    }

    void standIn(const Instance& other, const Instance& here) {
        if (m_known.insert(other.core().slot()).second)
            m_copies.emplace_back(other.core(), here.core());
    }
    bool hasStandIn(const VnDbObjectId& other) const { return m_known.contains(other.slot()); }

    /// Spatial elements below two places that stand for each other.
    void matchPlaces(const Instance& other, const Instance& here) {
        std::vector<Instance> free = parts(here);
        for (const Instance& part : parts(other)) {
            const auto found = std::ranges::find_if(
                free, [&](const Instance& each) { return each.type() == part.type() && each.name() == part.name(); });
            const bool isPlace = part.is("IfcSite") || part.is("IfcBuilding") || part.is("IfcBuildingStorey");
            if (found == free.end() || !isPlace || hasStandIn(part.core()))
                continue;
            standIn(part, *found);
            m_places.insert(found->core().slot());
            const Instance match = *found;
            free.erase(found);
            matchPlaces(part, match);
        }
    }

    void matchContexts() {
        std::map<std::uint64_t, Instance> contexts;
        for (const Instance& context : m_target.instances("IfcRepresentationContext"))
            contexts.emplace(m_digests.of(m_roster.ordinalOf(context.core())), context);
        for (const Instance& context : m_other.instances("IfcRepresentationContext"))
            if (const auto found = contexts.find(m_otherDigests.of(m_otherRoster.ordinalOf(context.core())));
                found != contexts.end())
                standIn(context, found->second);
    }

    /// Objects of the same GlobalId: those that say the same become one.
    void matchObjects() {
        std::map<std::uint64_t, std::uint32_t> objects;
        for (std::uint32_t i = 0; i < m_roster.size(); ++i)
            if (m_digests.identity(i) != 0)
                objects.emplace(m_digests.identity(i), i);
        for (std::uint32_t i = 0; i < m_otherRoster.size(); ++i) {
            const auto found =
                m_otherDigests.identity(i) == 0 ? objects.end() : objects.find(m_otherDigests.identity(i));
            if (found == objects.end() || hasStandIn(m_otherRoster.handle(i)))
                continue;
            if (m_digests.of(found->second) == m_otherDigests.of(i))
                standIn(m_other.wrap(m_otherRoster.handle(i)), m_target.wrap(m_roster.handle(found->second)));
            else
                m_taken.insert(m_otherRoster.handle(i).slot());
        }
    }

    /// Everything that has an identity or is about such; the rest comes along where it is referred to.
    std::vector<VnDbObjectId> sources() {
        Annotations annotations;
        Living living(m_there, m_otherRoster, annotations);
        // What is about objects that are there already is there, too.
        living.start(
            [this](std::uint32_t i) { return m_otherDigests.identity(i) != 0 && !hasStandIn(m_otherRoster.handle(i)); },
            [](std::uint32_t) { return true; });
        std::vector<VnDbObjectId> sources;
        for (std::uint32_t i = 0; i < m_otherRoster.size(); ++i) {
            const VnIfcEntityBase& instance = m_otherRoster.instance(i);
            const ClassInfo* info = m_there.classOf(instance);
            const bool isSource =
                !info || m_otherDigests.identity(i) != 0 || (living.alive()[i] && !annotations.rowsOf(*info).empty());
            if (isSource && !hasStandIn(m_otherRoster.handle(i)))
                sources.push_back(m_otherRoster.handle(i));
        }
        for (const Instance& context : listOf(m_otherProject, "RepresentationContexts"))
            sources.push_back(context.core());
        for (const Instance& unit : m_newUnits)
            sources.push_back(unit.core());
        return sources;
    }

    void settle(const Instance& source, Instance copy) {
        if (m_taken.contains(source.core().slot())) {
            copy.set("GlobalId", VnIfcGUID::create().view());
            ++m_result.renamed;
            if (m_options.renamed)
                m_options.renamed("#" + std::to_string(source.id()) + ' ' + std::string(source.type()) + ' ' +
                                  source.globalId() +
                                  " is another object than the one of that GlobalId that is there: "
                                  "it is " +
                                  copy.globalId() + " now");
        }
        // A place that two files have is a part of one whole.
        if (m_places.empty() || copy.isForeign() || !copy.is("IfcRelAggregates"))
            return;
        const std::vector<Instance> all = listOf(copy, "RelatedObjects");
        std::vector<Instance> rest;
        for (const Instance& part : all)
            if (!m_places.contains(part.core().slot()))
                rest.push_back(part);
        if (rest.empty() && !all.empty())
            m_target.erase(copy);
        else if (rest.size() != all.size())
            copy.set("RelatedObjects", Value(rest));
    }

    void addToProject() {
        std::map<const VnIfcInstanceSlot*, VnDbObjectId> copies;
        for (const auto& [source, copy] : m_copies)
            copies.emplace(source.slot(), copy);
        const auto extend = [&](Instance owner, const char* attribute, const std::vector<Instance>& more) {
            std::vector<Instance> list;
            std::set<const VnIfcInstanceSlot*> known;
            const auto add = [&](const VnDbObjectId& handle) {
                if (known.insert(handle.slot()).second)
                    list.push_back(m_target.wrap(handle));
            };
            for (const Instance& each : listOf(owner, attribute))
                add(each.core());
            const std::size_t before = list.size();
            for (const Instance& each : more)
                add(copies.at(each.core().slot()));
            if (list.size() != before)
                owner.set(attribute, Value(list));
        };
        extend(m_project, "RepresentationContexts", listOf(m_otherProject, "RepresentationContexts"));
        if (const Instance units = oneOf(m_project, "UnitsInContext"))
            extend(units, "Units", m_newUnits);
    }

    Model& m_target;
    const Model& m_other;
    const MergeOptions& m_options;
    ModelState& m_here;
    ModelState& m_there;
    Instance m_project;
    Instance m_otherProject;
    Roster m_roster;
    Roster m_otherRoster;
    Digests m_digests;
    Digests m_otherDigests;
    std::vector<Instance> m_newUnits;
    std::vector<std::pair<VnDbObjectId, VnDbObjectId>> m_copies;
    std::set<const VnIfcInstanceSlot*> m_known;  ///< of the other model, with a stand-in
    std::set<const VnIfcInstanceSlot*> m_taken;  ///< of the other model, whose GlobalId means another object here
    std::set<const VnIfcInstanceSlot*> m_places; ///< of this model, which stand for others
    MergeResult m_result;
};

} // namespace

MergeResult merge(Model& target, const Model& other, const MergeOptions& options) {
    return Merger(target, other, options).run();
}

} // namespace vnifc
