#include "../whole/References.h"
#include "Reading.h"

#include <vnifc/References.h>

namespace vnifc {

using namespace VN_SDAI;
using detail::AttributeInfo;
using detail::ClassInfo;
using typed::AttributeRow;

namespace {

/// Finds the places of one instance in the value of an attribute.
class PlaceFinder final : public ValueVisitor {
public:
    PlaceFinder(const Instance& wanted, Reference place, std::vector<Reference>& found)
        : m_wanted(wanted), m_place(std::move(place)), m_found(found) {}

    void null() override { next(); }
    void boolean(bool) override { next(); }
    void unknown() override { next(); }
    void integer(std::int64_t) override { next(); }
    void real(double) override { next(); }
    void text(std::string_view) override { next(); }
    void literal(std::string_view) override { next(); }
    void instance(const Instance& instance) override {
        if (instance == m_wanted)
            m_found.push_back(m_place);
        next();
    }
    std::size_t beginList(std::size_t count) override {
        m_place.position.push_back(0);
        return count;
    }
    void endList() override {
        m_place.position.pop_back();
        next();
    }

private:
    void next() noexcept {
        if (!m_place.position.empty())
            ++m_place.position.back();
    }

    const Instance& m_wanted;
    Reference m_place;
    std::vector<Reference>& m_found;
};

/// The places in what is kept of an instance as text.
void findInText(const VnIfcEntityBase& instance, const ClassInfo* info, const Instance& wanted, Reference place,
                std::vector<Reference>& found) {
    place.isInText = true;
    const auto look = [&](std::string_view text) {
        detail::forEachTextReference(text, [&](std::size_t, std::size_t, std::uint64_t number) {
            if (number == wanted.id())
                found.push_back(place);
        });
    };
    if (!info)
        return look(static_cast<const VnIfcForeignInstance&>(instance).parameters().view());
    for (const auto& [position, text] : instance.keptTexts()) {
        place.attribute = position < info->attributes.size() ? info->attributes[position].row->name : "";
        look(text);
    }
}

} // namespace

std::vector<InverseAttribute> inverseAttributes(const Instance& instance) {
    const VnIfcEntityBase& object = detail::opened(instance);
    detail::ModelState& state = *instance.state();
    std::vector<InverseAttribute> inverses;
    const ClassInfo* info = state.classOf(object);
    if (!info)
        return inverses;
    state.needInverses();
    for (const AttributeRow* row : info->inverses) {
        InverseAttribute inverse{row->name, {}};
        const auto add = [&](const VnDbObjectId& handle) {
            if (handle.openObject())
                inverse.instances.emplace_back(handle, &state);
        };
        detail::forEachHandle(object, *row, add);
        if (!inverse.instances.empty())
            inverses.push_back(std::move(inverse));
    }
    return inverses;
}

std::vector<Reference> referencesTo(const Instance& instance) {
    std::vector<Reference> found;
    for (const Instance& referrer : instance.referrers()) {
        const VnIfcEntityBase& object = detail::opened(referrer);
        detail::ModelState& state = *referrer.state();
        const ClassInfo* info = state.classOf(object);
        for (const AttributeRow* row : info ? info->references : std::vector<const AttributeRow*>()) {
            PlaceFinder finder(instance, {referrer, row->name, {}, false}, found);
            detail::visitField(state, object, *row, true, finder);
        }
        if (detail::hasText(object))
            findInText(object, info, instance, {referrer, {}, {}, true}, found);
    }
    return found;
}

} // namespace vnifc
