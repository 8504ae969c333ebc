// The layer beside the classes beneath it: an attribute by a name that was looked up before, and by its name.
#include <IFC4X3/IfcDoor.h>
#include <IFC4X3/Module.h>
#include <VnIfcCore/VnIfcVariant.h>
#include <vnifc/AttributeKey.h>
#include <vnifc/Model.h>

#include <benchmark/benchmark.h>

#include <vector>

namespace {

vnifc::Model& model() {
    static vnifc::Model model = vnifc::create("IFC4X3");
    return model;
}

vnifc::Instance door() {
    static const vnifc::Instance door = [] {
        vnifc::Instance made = model().create("IfcDoor");
        made.set("Name", "Front door");
        made.set("OverallWidth", 0.9);
        return made;
    }();
    return door;
}

const IFC4X3::IfcDoor& typedDoor() { return static_cast<const IFC4X3::IfcDoor&>(*door().core().openObject()); }

/// As many doors as do not fit into the caches, in their order.
const std::vector<vnifc::Instance>& doors() {
    constexpr int kDoors = 200'000;
    static const std::vector<vnifc::Instance> doors = [] {
        for (int i = 0; i < kDoors; ++i)
            model().create("IfcDoor").set("OverallWidth", 0.7 + 0.001 * (i % 500));
        return model().instances("IfcDoor").toVector();
    }();
    return doors;
}

void layerRealTyped(benchmark::State& state) {
    for (auto _ : state) {
        double sum = 0;
        for (const vnifc::Instance& each : doors())
            if (const VN_SDAI::VnIfcEntityBase* object = each.core().openObject())
                sum += static_cast<const IFC4X3::IfcDoor*>(object)->getOverallWidth();
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(doors().size()));
}
BENCHMARK(layerRealTyped);

void layerRealByKey(benchmark::State& state) {
    const vnifc::AttributeKey key = model().key("IfcDoor", "OverallWidth");
    for (auto _ : state) {
        double sum = 0;
        for (const vnifc::Instance& each : doors())
            sum += each.get<double>(key).value_or(0);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(doors().size()));
}
BENCHMARK(layerRealByKey);

void layerTextByGetAttr(benchmark::State& state) {
    const IFC4X3::IfcDoor& instance = typedDoor();
    const VN_SDAI::VnAnsiString name("Name");
    VN_SDAI::VnIfcVariant value;
    for (auto _ : state) {
        benchmark::DoNotOptimize(instance.getAttr(name, value));
        benchmark::DoNotOptimize(value.payload());
    }
}
BENCHMARK(layerTextByGetAttr);

void layerTextByName(benchmark::State& state) {
    vnifc::Instance instance = door();
    for (auto _ : state) {
        benchmark::DoNotOptimize(instance);
        benchmark::DoNotOptimize(instance["Name"]);
    }
}
BENCHMARK(layerTextByName);

} // namespace
