#include "Erasing.h"

#include "Reading.h"
#include "Writing.h"

namespace vnifc::detail {

using namespace VN_SDAI;

namespace {

/// The value without some instances: a list loses them, everything else becomes null.
Value without(const Value& value, const Slots& gone) {
    if (const auto* list = std::get_if<Value::List>(&value.variant())) {
        Value::List rest;
        for (const Value& element : *list)
            if (Value left = without(element, gone); !left.isNull() || element.isNull())
                rest.push_back(std::move(left));
        return rest.empty() && !list->empty() ? Value() : Value(std::move(rest));
    }
    if (const auto* typed = std::get_if<Typed>(&value.variant())) {
        Value left = without(typed->value(), gone);
        return left.isNull() ? Value() : Value(Typed(typed->type(), std::move(left)));
    }
    const auto* held = std::get_if<Instance>(&value.variant());
    return held && gone.contains(held->core().slot()) ? Value() : value;
}

void forget(ModelState& state, VnIfcEntityBase& instance, const Slots& gone) {
    const ClassInfo* info = state.classOf(instance);
    if (!info)
        return;
    for (const typed::AttributeRow* row : info->references) {
        bool isConcerned = false;
        const auto look = [&](const VnDbObjectId& handle) {
            isConcerned = isConcerned || gone.contains(handle.slot());
        };
        forEachHandle(instance, *row, look);
        if (!isConcerned)
            continue;
        const AttributeInfo& attribute = *info->infoOf(*row);
        const Value rest = without(valueOf(state, instance, *row, &attribute), gone);
        // What the file's own release does not have cannot be changed; it is written as unset.
        if (!instance.isBeyondFile(attribute.position))
            store(state, instance, attribute, rest);
    }
}

} // namespace

void eraseAll(ModelState& state, const std::vector<VnDbObjectId>& handles) {
    Slots gone;
    for (const VnDbObjectId& handle : handles)
        gone.insert(handle.slot());
    // Taken first, since every change of a reference makes them to be found anew.
    std::unordered_set<VnIfcEntityBase*> concerned;
    for (const VnDbObjectId& handle : handles)
        for (const Instance& referrer : state.referrers.of(state, handle))
            if (!gone.contains(referrer.core().slot()))
                concerned.insert(referrer.core().openObject());
    for (VnIfcEntityBase* instance : concerned)
        forget(state, *instance, gone);
    for (const VnDbObjectId& handle : handles)
        if (const VnIfcEntityBase* instance = handle.openObject())
            if (const ClassInfo* info = state.classOf(*instance))
                state.changed(*info);
    state.model().erase(handles);
    state.referencesChanged();
}

} // namespace vnifc::detail
