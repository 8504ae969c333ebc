#include "Allocations.h"

#include <VnIfcCore/VnIfcListAggr.h>
#include <VnIfcCore/VnIfcSetAggr.h>

#include <gtest/gtest.h>

#include <string_view>

using namespace VN_SDAI;

namespace {

static_assert(sizeof(VnIfcListAggrCompound<VnIfcListAggr<double>>) == 8);
static_assert(sizeof(VnIfcSetAggrBounded<VnAnsiString, 1, 2>) == 8);

/// Sizes of the blocks that the action takes from the heap.
template <class Action>
std::vector<std::size_t> allocations(Action action) {
    recordAllocations(true);
    action();
    recordAllocations(false);
    return recordedAllocations();
}

using Sizes = std::vector<std::size_t>;
constexpr std::string_view kLong = "a text too long for any small buffer";
constexpr std::string_view kLonger = "a text that is longer still than that one";

TEST(Storage, AnAggregateIsOneBlockOfExactlyItsElements) {
    const double values[] = {1, 2, 3};
    const int ints[] = {1, 5, 9};
    VnIfcListAggrBounded<double, 1, 3> point;
    VnIfcSetAggr<int> set;
    EXPECT_EQ(allocations([] { VnIfcListAggr<double> nil, copy(nil); }), Sizes{});
    EXPECT_EQ(allocations([&] { point.assign(values); }), Sizes{40});
    EXPECT_EQ(allocations([&] { VnIfcListAggr<double> copy(point), moved(std::move(copy)); }), Sizes{40});
    EXPECT_EQ(allocations([&] { set.assign(ints); }), Sizes{28});
    EXPECT_EQ(allocations([&] { set.remove(5), set.add(5), set.add(5); }), Sizes{});
}

TEST(Storage, AppendingTakesFewBlocks) {
    VnIfcUnOrderedAggr<int> set;
    EXPECT_LE(allocations([&] {
                  for (int i = 0; i < 10000; ++i)
                      set.add(i);
              }).size(),
              16u);
}

TEST(Storage, MovedValuesAreNotCopied) {
    std::vector<VnAnsiString> values{kLong, "b", kLong};
    VnIfcListAggr<VnAnsiString> list;
    EXPECT_EQ(allocations([&] { list.assign(std::move(values)); }), Sizes{40});
    EXPECT_EQ(list[2], kLong);
}

TEST(Storage, AnArenaTakesEverythingAndCopiesLeaveIt) {
    VnIfcListAggr<VnAnsiString> kept;
    VnIfcListAggrCompound<VnIfcListAggr<int>> keptRows;
    VnIfcUnOrderedAggr<int> grown;
    {
        VnIfcArena arena;
        VnIfcListAggr<VnAnsiString> list;
        VnIfcListAggrCompound<VnIfcListAggr<int>> rows;
        {
            const VnIfcArenaScope scope(arena);
            arena.allocate(1);
            arena.recentText(0); // the memory of what was made lately is the arena's own
            const auto taken = allocations([&] {
                list.append(VnAnsiString(kLong));
                list.append(VnAnsiString(kLong));
                grown.createEmpty();
            });
            EXPECT_EQ(taken, Sizes{});
            rows.assign({{1, 2}, {3}});
        }
        // Contents of an arena block may lie on the heap, and the other way round.
        list.append(VnAnsiString(kLong));
        list.putAt(0, VnAnsiString(kLonger));
        for (int i = 0; i < 8; ++i)
            grown.add(i);
        kept = list;
        keptRows = rows;
    }
    ASSERT_EQ(kept.count(), 3u);
    EXPECT_EQ(kept[0], kLonger);
    EXPECT_EQ(kept[1], kLong);
    EXPECT_EQ(keptRows[0][1], 2);
    EXPECT_EQ(grown.count(), 8u);
}

TEST(Array, GrowsByItsStepAndThenGeometrically) {
    VnIfcArray<int> array(100u);
    EXPECT_LE(allocations([&] {
                  for (int i = 0; i < 100000; ++i)
                      array.append(i);
              }).size(),
              12u);
    ASSERT_EQ(array.length(), 100000u);
    EXPECT_EQ(array[99999], 99999);
    EXPECT_EQ(VnIfcArray<int>(array).growStep(), 100u);
}

TEST(Array, KeepsElementsWhateverHappensToItsLength) {
    VnIfcArray<VnAnsiString> texts{kLong, "b"};
    for (int i = 0; i < 20; ++i)
        texts.append(texts[0]);
    EXPECT_EQ(texts[21], kLong);
    texts.setLogicalLength(1);
    texts.setLogicalLength(3);
    EXPECT_EQ(texts, (VnIfcArray<VnAnsiString>{kLong, "", ""}));
    VnIfcArray<VnAnsiString> copy(texts), taken(std::move(texts));
    EXPECT_TRUE(texts.isEmpty());
    EXPECT_EQ(copy, taken);
    copy.clear();
    EXPECT_TRUE(copy.isEmpty());
    copy.append("again");
    EXPECT_EQ(copy.at(0), "again");
    EXPECT_THROW(taken.reserve(std::size_t{1} << 32), std::length_error);
    EXPECT_EQ(taken.length(), 3u);
}

} // namespace
