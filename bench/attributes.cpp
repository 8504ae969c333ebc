// Attributes by name beside typed accessors: the own attribute of a deep class, and those of its root, to which the
// name travels up the whole chain.
#include <IFC4X3/IfcWall.h>
#include <IFC4X3/Module.h>
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcVariant.h>

#include <benchmark/benchmark.h>

using namespace IFC4X3;
using namespace VN_SDAI;

namespace {

/// A wall in a model, so that the access checks have something to look at.
IfcWall& wall() {
    static const bool isReady = vnGetModuleLifeCycleApp()->initApp();
    static VnIfcModel model(isReady ? vnifcGetSchemaPointer() : nullptr);
    static IfcWall& wall = *model.create<IfcWall>();
    wall.setName("Wall of the house");
    wall.setPredefinedType(kIfcWallTypeEnum_SOLIDWALL);
    return wall;
}

// Attributes of IfcWall by what it costs to find them: the only one of its own, and the root's first, third and last.
constexpr const char* kNames[] = {"PredefinedType", "GlobalId", "Name", "Description"};

void getByName(benchmark::State& state) {
    const IfcWall& instance = wall();
    const VnAnsiString name(kNames[state.range(0)]);
    state.SetLabel(kNames[state.range(0)]);
    VnIfcVariant value;
    for (auto _ : state) {
        benchmark::DoNotOptimize(instance.getAttr(name, value));
        benchmark::DoNotOptimize(value.payload());
    }
}
BENCHMARK(getByName)->DenseRange(0, 3);

void putByName(benchmark::State& state) {
    IfcWall& instance = wall();
    const VnAnsiString name(kNames[state.range(0)]);
    state.SetLabel(kNames[state.range(0)]);
    const VnIfcVariant code(5), text(VnAnsiString("Wall of the house"));
    const VnIfcVariant& value = state.range(0) == 0 ? code : text;
    for (auto _ : state)
        benchmark::DoNotOptimize(instance.putAttr(name, value));
}
BENCHMARK(putByName)->Arg(0)->Arg(2)->Arg(3);

void testByName(benchmark::State& state) {
    const IfcWall& instance = wall();
    const VnAnsiString name("Name");
    for (auto _ : state)
        benchmark::DoNotOptimize(instance.testAttr(name));
}
BENCHMARK(testByName);

void getTyped(benchmark::State& state) {
    const IfcWall* instance = &wall();
    for (auto _ : state) {
        benchmark::DoNotOptimize(instance);
        benchmark::DoNotOptimize(instance->getName().constStr());
    }
}
BENCHMARK(getTyped);

void setTyped(benchmark::State& state) {
    IfcWall& instance = wall();
    const VnAnsiString name("Wall of the house");
    for (auto _ : state)
        instance.setName(name);
}
BENCHMARK(setTyped);

} // namespace
