// Instances in a model: numbers, handles, life and death, copies.
#include "Sanitized.h"
#include "exchange/Support.h"

#include <IFC4X3/IfcFaceBound.h>
#include <IFC4X3/IfcPerson.h>
#include <IFC4X3/IfcRelAggregates.h>
#include <IFC4X3/IfcWall.h>
#include <IFC4X3/IfcWallType.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnIfcCore/VnIfcStorage.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace VN_SDAI;
using namespace IFC4X3;
using namespace exchange;

namespace {

constexpr std::uint64_t kLargest = 0xFFFFFFFFFFFFFFFF;

std::vector<std::uint64_t> numbersOf(const VnIfcModel& model) {
    std::vector<std::uint64_t> numbers;
    for (const VnDbObjectId& handle : model.instances())
        numbers.push_back(handle.number());
    return numbers;
}

/// Counts those alive.
class CountedWall : public IfcWall {
public:
    explicit CountedWall(int& alive) : m_alive(alive) { ++m_alive; }
    ~CountedWall() override { --m_alive; }

private:
    int& m_alive;
};

} // namespace

TEST(Model, CreatesByNameAndByClassUnderTheNextNumber) {
    VnIfcModel model(schema());
    const VnDbObjectId first = model.create("ifcwall");
    EXPECT_EQ(first.number(), 1u);
    EXPECT_TRUE(first.openObject()->isInstanceOf(IfcWall::g_pEntityType));
    EXPECT_EQ(first.openObject()->objectId(), first);
    EXPECT_EQ(first.model(), &model);
    EXPECT_EQ(first.openObject()->owningModel(), &model);
    EXPECT_TRUE(model.create("IfcNoWall").isNull());
    EXPECT_EQ(model.create<IfcPerson>()->objectId().number(), 2u);
    EXPECT_EQ(model.append(std::make_unique<IfcPerson>()).number(), 3u);
    EXPECT_EQ(model.count(), 3u);
}

TEST(Model, ErasedInstancesAreGoneButTheirNumbersAreNotUsedAgain) {
    VnIfcModel model(schema()), other(schema());
    auto* wall = model.create<IfcWall>();
    auto* relation = model.create<IfcRelAggregates>();
    const VnDbObjectId handle = wall->objectId(), last = relation->objectId();
    relation->setRelatingObject(handle);
    EXPECT_FALSE(other.erase(handle)) << "of another model";
    EXPECT_TRUE(model.erase(handle));
    EXPECT_FALSE(model.erase(handle)) << "twice";
    EXPECT_FALSE(model.erase(VnDbObjectId()));
    EXPECT_EQ(handle.openObject(), nullptr);
    EXPECT_EQ(handle.openObject(kForRead, true), wall);
    EXPECT_TRUE(model.find(1).isNull());
    EXPECT_EQ(model.count(), 1u);
    EXPECT_EQ(numbersOf(model), std::vector<std::uint64_t>{2});
    EXPECT_EQ(relation->RelatingObject(), nullptr);
    EXPECT_NE(model.writeText().find("DATA;\n#2=IFCRELAGGREGATES($,$,$,$,$,());\nENDSEC"), std::string::npos);
    EXPECT_TRUE(model.erase(last));
    EXPECT_EQ(model.create("IfcWall").number(), 3u);
}

TEST(Model, OwnsItsInstancesUntilItIsClearedOrDestroyed) {
    int alive = 0;
    VnIfcModel model(schema());
    model.append(std::make_unique<CountedWall>(alive));
    model.erase(model.append(std::make_unique<CountedWall>(alive)));
    model.header().set("FILE_NAME", "'x'");
    EXPECT_EQ(alive, 2);
    model.clear();
    EXPECT_EQ(alive, 0);
    EXPECT_TRUE(model.count() == 0 && model.find(1).isNull() && model.header().entries().empty());
    EXPECT_EQ(model.create("IfcWall").number(), 1u);
    {
        VnIfcModel inner(schema());
        inner.append(std::make_unique<CountedWall>(alive));
    }
    EXPECT_EQ(alive, 0);
}

TEST(Model, FindsNumbersDenseOrSparseInWhateverOrderTheyCame) {
    std::vector<std::vector<std::uint64_t>> lists = {
        {1}, {5, 4, 3, 2, 1}, {kLargest}, {1, kLargest, 2, kLargest - 1}, {1000000, 1, 2, 3},
    };
    std::mt19937_64 random(7);
    lists.reserve(lists.size() + 4);
    std::vector<std::uint64_t>&dense = lists.emplace_back(), &steps = lists.emplace_back(),
    &wild = lists.emplace_back(), &crowd = lists.emplace_back();
    for (std::uint64_t i = 1; i <= 30000; ++i) {
        dense.push_back(i);
        steps.push_back(i < 20000 ? i * 3 : i * 1000);
        wild.push_back(random() | 1);
    }
    // Far apart where one looks, and all the others in one place.
    for (std::uint64_t i = 1; i <= 100000; ++i)
        crowd.push_back(i << 40);
    for (std::uint64_t i = 1; i <= 99000; ++i)
        crowd.push_back((std::uint64_t{3} << 60) + i);
    std::ranges::shuffle(dense, random);
    std::ranges::shuffle(steps, random);
    for (const std::vector<std::uint64_t>& numbers : lists) {
        std::string data;
        for (const std::uint64_t number : numbers)
            data += '#' + std::to_string(number) + "=IFCFACEBOUND($,.T.);\n";
        const std::clock_t start = std::clock();
        Reading reading(fileOf(data));
        EXPECT_LT((std::clock() - start) / CLOCKS_PER_SEC, 12) << numbers.size();
        ASSERT_EQ(reading.codes(), "");
        std::vector<std::uint64_t> sorted = numbers;
        std::ranges::sort(sorted);
        EXPECT_EQ(numbersOf(reading.model), sorted);
        for (const std::uint64_t number : numbers)
            ASSERT_EQ(reading.model.find(number).number(), number);
        for (const std::uint64_t number : {std::uint64_t{0}, sorted.back() + 1, sorted.front() - 1})
            EXPECT_TRUE(reading.model.find(number).isNull()) << number;
        const std::uint64_t created = reading.model.create("IfcWall").number();
        EXPECT_TRUE(!std::ranges::binary_search(sorted, created) && created != 0);
        EXPECT_EQ(sorted.back() == kLargest || created == sorted.back() + 1, true);
        EXPECT_EQ(reading.model.find(created).number(), created);
        sorted.insert(std::ranges::lower_bound(sorted, created), created);
        EXPECT_EQ(numbersOf(reading.model), sorted) << "also beside the largest number";
        EXPECT_EQ(reading.model.count(), numbers.size() + 1);
    }
}

TEST(Model, StaysInOrderWhenNumbersBelowThoseThereAreUsed) {
    Reading reading(fileOf("#100=IFCPERSON();\n#500000000000=IFCPERSON();\n#18446744073709551615=IFCPERSON();\n"));
    for (int i = 0; i < 300; ++i)
        reading.model.create("IfcPerson");
    const std::vector<std::uint64_t> numbers = numbersOf(reading.model);
    EXPECT_EQ(numbers.size(), 303u);
    EXPECT_TRUE(std::ranges::is_sorted(numbers));
}

TEST(Model, VisitsEachInstanceOnceWhileVisitorsCreateAndErase) {
    Reading reading(fileOf("#5=IFCFACEBOUND($,.T.);\n#18446744073709551615=IFCFACEBOUND($,.F.);\n#7=IFCPERSON();\n"));
    std::vector<std::uint64_t> visited;
    reading.model.forEach([&](const VnIfcEntityBase& instance) {
        visited.push_back(instance.objectId().number());
        reading.model.create("IfcWall"); // the largest number is taken, so that these come before those not yet visited
        if (visited.size() == 1)
            reading.model.erase(reading.model.find(7));
    });
    EXPECT_EQ(visited, (std::vector<std::uint64_t>{5, kLargest}));
    EXPECT_EQ(reading.model.count(), 4u);
}

TEST(Model, FindsInstancesByTypeWithAndWithoutSubtypes) {
    VnIfcModel model(schema());
    for (const char* name : {"IfcWallStandardCase", "IfcWall", "IfcSlab", "IfcPerson"})
        model.create(name);
    EXPECT_EQ(model.instancesOf(IfcWall::g_pEntityType).size(), 2u);
    EXPECT_EQ(model.instancesOf(IfcWall::g_pEntityType, false).size(), 1u);
    EXPECT_EQ(model.instancesOf(IfcRoot::g_pEntityType).size(), 3u);
    EXPECT_EQ(model.instancesOf(IfcRoot::g_pEntityType, false).size(), 0u);
    EXPECT_EQ(model.instancesOf(nullptr).size(), 0u);
}

TEST(Model, FindsTheFirstInstanceOfAGlobalId) {
    VnIfcModel model(schema());
    const VnIfcGUID id("0YvctVUKr0kugbFTf53O9L");
    auto* first = model.create<IfcWall>();
    auto* second = model.create<IfcWallType>();
    model.create<IfcPerson>();
    first->setGlobalId(id);
    second->setGlobalId(id);
    EXPECT_EQ(model.findByGlobalId(id), first->objectId());
    model.erase(first->objectId());
    EXPECT_EQ(model.findByGlobalId(id), second->objectId());
    EXPECT_TRUE(model.findByGlobalId("0YvctVUKr0kugbFTf53O9M").isNull());
}

TEST(Model, HandlesAreOrderedByNumberAndKnowTheirModel) {
    VnIfcModel left(schema()), right(schema());
    const VnDbObjectId one = left.create("IfcWall"), two = left.create("IfcWall"), other = right.create("IfcWall");
    EXPECT_TRUE(one < two && !(two < one) && VnDbObjectId() < one);
    EXPECT_TRUE((one < other) != (other < one));
    EXPECT_TRUE(one == left.find(1) && one != other);
    EXPECT_EQ(VnDbObjectId().model(), nullptr);
    EXPECT_EQ(VnDbObjectId().openObject(), nullptr);
    EXPECT_EQ(two.model(), &left);
}

TEST(Copy, WithinAModelRefersToWhatTheSourceRefersTo) {
    Reading reading(fileOf("#1=IFCPERSON('it''s',$,$,(),$,$,$,$);\n#2=IFCRELAGGREGATES('',#9,.X.,$,#1,(#2,#1));\n"
                           "#3=IFCFOO(#1,'#2');\n"));
    EXPECT_EQ(reading.model.copy(reading.model.find(2)).number(), 10u);
    EXPECT_EQ(reading.model.copy(reading.model.find(3)).number(), 11u);
    EXPECT_EQ(reading.model.count(), 5u);
    const std::string data = reading.data();
    EXPECT_EQ(data.substr(data.find("#10=")), "#10=IFCRELAGGREGATES('',#9,.X.,$,#1,(#1,#2));\n#11=IFCFOO(#1,'#2');\n");
    EXPECT_TRUE(reading.model.copy(VnDbObjectId()).isNull());
}

TEST(Copy, IntoAnotherModelBringsEverythingReferredToOnce) {
    Reading source(fileOf("#1=IFCPERSON('a',$,$,$,$,$,$,$,'surplus');\n#5=IFCRELAGGREGATES('',#9,$,$,#6,(#5,#1,#7));\n"
                          "#6=IFCRELAGGREGATES('',$,$,$,#5,(#1));\n#7=IFCFOO(#6,('#6'),#9);\n#8=IFCWALL();\n"));
    VnIfcModel target(schema());
    target.create("IfcWall");
    std::vector<std::pair<VnDbObjectId, VnDbObjectId>> copies;
    const VnDbObjectId copy = target.copy(source.model.find(5), copies);
    EXPECT_EQ(copy.model(), &target);
    EXPECT_EQ(copies.size(), 4u);
    EXPECT_EQ(target.count(), 5u);
    const std::string written = target.writeText();
    EXPECT_EQ(written.substr(written.find("#2=")),
              "#2=IFCRELAGGREGATES('',$,$,$,#3,(#2,#4,#5));\n#3=IFCRELAGGREGATES('',$,$,$,#2,(#4));\n"
              "#4=IFCPERSON('a',$,$,$,$,$,$,$,'surplus');\n#5=IFCFOO(#3,('#6'),$);\n" +
                  std::string(kTail));
    EXPECT_EQ(target.copy(source.model.find(6), copies).number(), 3u) << "known already";
    EXPECT_EQ(target.count(), 5u);
}

TEST(Copy, LeavesOutWhatIsErased) {
    Reading source(fileOf("#1=IFCFOO(#2,(#3));\n#2=IFCPERSON();\n#3=IFCFOO();\n"));
    source.model.erase(source.model.find(2));
    VnIfcModel target(schema());
    target.copy(source.model.find(1));
    EXPECT_EQ(target.count(), 2u);
    EXPECT_NE(target.writeText().find("#1=IFCFOO($,(#2));\n#2=IFCFOO();\n"), std::string::npos) << target.writeText();
}

TEST(Copy, LooksAtNothingBehindTheText) {
    // Vectors of bytes are compared; where the text ends in its memory depends on its length.
    for (std::size_t length = 0; length < 600; ++length) {
        VnIfcModel source(schema()), target(schema());
        const std::string name(length, 'x');
        source.create<IfcWall>()->setName(name);
        ASSERT_EQ(openAs<IfcWall>(target.copy(source.find(1)))->getName(), name);
        ASSERT_EQ(openAs<IfcWall>(source.copy(source.find(1)))->getName(), name);
    }
}

TEST(Memory, ClearGivesItBack) {
    if (kSanitized)
        GTEST_SKIP() << "sanitizers keep freed memory back";
    std::string data;
    for (int i = 1; i <= 50000; ++i)
        data += '#' + std::to_string(i) + "=IFCPERSON('identification number " + std::to_string(i) + "','" +
                std::string(100, 'n') + "',$,('a','b'),$,$,$,$,5);\n";
    const std::string file = fileOf(data);
    const auto peak = [] {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss;
    };
    VnIfcModel model(schema());
    ASSERT_TRUE(model.readText(file));
    model.clear();
    const auto once = peak();
    for (int i = 0; i < 6; ++i) {
        ASSERT_TRUE(model.readText(file));
        model.clear();
    }
    EXPECT_LT(peak(), once + once / 2);
}

TEST(Memory, AFilesTextIsGivenBackWhileItIsRead) {
    if (kSanitized)
        GTEST_SKIP() << "sanitizers keep freed memory back";
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("vnifc_given_back" + std::to_string(::getpid()) + ".ifc");
    {
        std::ofstream out(file);
        out << kHead;
        for (int i = 1; i <= 500000; ++i)
            out << '#' << i << "=IFCPERSON('" << std::string(60, 'p') << "',$,$,$,$,$,$,$);\n";
        out << kTail;
    }
    const auto size = std::filesystem::file_size(file);
    const auto peak = [] {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
    };
    const pid_t child = ::fork(); // a peak stays with its process
    if (child == 0) {
        VnIfcModel model(schema());
        VnIfcReadOptions options;
        options.threads = 1;
        const std::size_t before = peak();
        const bool read = static_cast<bool>(model.readFile(file, options));
        ::_exit(read ? static_cast<int>(std::min<std::size_t>(100 * (peak() - before) / size / 2, 255)) : 255);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    std::filesystem::remove(file);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_LT(2 * WEXITSTATUS(status), 280) << "per cent of the file; with all of its text a hundred more";
}

TEST(Memory, AnArenaAlignsAndGrowsWithWhatItHolds) {
    VnIfcArena arena;
    EXPECT_EQ(arena.capacity(), 0u);
    std::vector<std::pair<char*, char*>> places;
    std::size_t taken = 0;
    for (std::size_t size = 1; size < 200000; size = size * 3 / 2 + 1) {
        auto* place = static_cast<char*>(arena.allocate(size));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(place) % alignof(double), 0u);
        std::fill_n(place, size, '\1');
        places.emplace_back(place, place + size);
        taken += size;
    }
    std::ranges::sort(places);
    for (std::size_t i = 1; i < places.size(); ++i)
        EXPECT_LE(places[i - 1].second, places[i].first) << "they overlap";
    EXPECT_GE(arena.capacity(), taken);
    EXPECT_LT(arena.capacity(), 4 * taken);
    ASSERT_EQ(VnIfcArenaScope::current(), nullptr);
    {
        const VnIfcArenaScope outer(arena);
        VnIfcArena second;
        {
            const VnIfcArenaScope inner(second);
            EXPECT_EQ(VnIfcArenaScope::current(), &second);
        }
        EXPECT_EQ(VnIfcArenaScope::current(), &arena);
    }
}
