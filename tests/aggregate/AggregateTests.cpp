#include <VnIfcCore/VnIfcConsts.h>
#include <VnIfcCore/VnIfcListAggr.h>
#include <VnIfcCore/VnIfcSetAggr.h>

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <set>

using namespace VN_SDAI;

namespace {

using Pair = VnIfcSetAggrBounded<int, 1, 2>;
using Row = VnIfcListAggrBounded<double, 2, 3>;
using Numbers = std::vector<int>;

template <class T>
std::vector<T> contents(const VnIfcAggrOf<T>& aggregate) {
    return {aggregate.begin(), aggregate.end()};
}

template <class Aggregate, class T>
Aggregate make(const std::vector<T>& values) {
    Aggregate result;
    result.assign(std::span<const T>(values));
    return result;
}

/// An element whose order does not tell all of it, and whose copies can be made to fail.
struct Tagged {
    static inline int copiesLeft = -1;

    int key = 0;
    VnAnsiString tag;

    Tagged(int k, const char* t) : key(k), tag(t) {}
    Tagged(const Tagged& other) : key(other.key), tag(other.tag) {
        if (copiesLeft == 0)
            throw std::runtime_error("copy refused");
        if (copiesLeft > 0)
            --copiesLeft;
    }
    Tagged(Tagged&&) noexcept = default;
    Tagged& operator=(Tagged&&) noexcept = default;
    bool operator==(const Tagged& other) const { return key == other.key && tag == other.tag; }
    bool operator<(const Tagged& other) const { return key < other.key; }
};

TEST(Set, AddAndRemoveKeepTheBounds) {
    struct Case {
        const char* what;
        Numbers before;
        VN::ErrorStatus (*act)(Pair&);
        VN::ErrorStatus status;
        Numbers after;
    };
    const Case cases[] = {
        {"add to nil", {}, [](Pair& set) { return set.add(7); }, VN::eOk, {7}},
        {"add in front", {7}, [](Pair& set) { return set.add(3); }, VN::eOk, {3, 7}},
        {"add twice", {7}, [](Pair& set) { return set.add(7); }, VN::eOk, {7}},
        {"add to a full set", {3, 7}, [](Pair& set) { return set.add(5); }, VN::eRefused, {3, 7}},
        {"add what a full set has", {3, 7}, [](Pair& set) { return set.add(7); }, VN::eOk, {3, 7}},
        {"add to an overfull set", {1, 2, 3}, [](Pair& set) { return set.add(9); }, VN::eRefused, {1, 2, 3}},
        {"remove", {3, 7}, [](Pair& set) { return set.remove(3); }, VN::eOk, {7}},
        {"remove at the lower bound", {7}, [](Pair& set) { return set.remove(7); }, VN::eRefused, {7}},
        {"remove what is absent", {3, 7}, [](Pair& set) { return set.remove(5); }, VN::eRefused, {3, 7}},
        {"remove from nil", {}, [](Pair& set) { return set.remove(5); }, VN::eRefused, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Pair set;
        if (!c.before.empty())
            set.assign(c.before);
        EXPECT_EQ(c.act(set), c.status);
        EXPECT_EQ(contents(set), c.after);
    }
}

TEST(Set, TheOpenBoundRefusesNothing) {
    VnIfcSetAggr<int> set;
    for (int i = 0; i < 70000; ++i)
        ASSERT_EQ(set.add(i), VN::eOk);
    EXPECT_EQ(set.count(), 70000u);
}

TEST(Set, AssignSortsAndKeepsTheFirstOfEqualOnes) {
    EXPECT_EQ(contents(make<VnIfcSetAggr<int>>(Numbers{3, 1, 3})), (Numbers{1, 3}));
    EXPECT_EQ(contents(make<VnIfcSetAggr<int>>(Numbers{1, 1})), (Numbers{1}));
    const std::vector<Tagged> values{{2, "first"}, {1, "one"}, {2, "second"}, {1, "another"}};
    const std::vector<Tagged> expected{{1, "one"}, {2, "first"}};
    EXPECT_EQ(contents(make<VnIfcSetAggr<Tagged>>(values)), expected);

    const double nan = Consts::VnRealUnset;
    const auto reals = make<VnIfcSetAggr<double>>(std::vector<double>{nan, 2, nan, 1});
    ASSERT_EQ(reals.count(), 3u);
    EXPECT_EQ(reals[0], 1);
    EXPECT_EQ(reals[1], 2);
    EXPECT_TRUE(reals.contains(nan));
}

TEST(Set, HandlesAreOrderedByNumberNotByAddress) {
    VnIfcInstanceSlot slots[3];
    for (int i = 0; i < 3; ++i)
        slots[i].number = 30 - 10 * i;
    VnIfcUnOrderedAggr<VnDbObjectId> set;
    for (VnIfcInstanceSlot& slot : slots)
        EXPECT_EQ(set.add(VnDbObjectId(&slot)), VN::eOk);
    EXPECT_EQ(set.add(VnDbObjectId(&slots[1])), VN::eOk);
    EXPECT_EQ(contents(set), (std::vector{VnDbObjectId(&slots[2]), VnDbObjectId(&slots[1]), VnDbObjectId(&slots[0])}));
}

TEST(List, PutReplacesInsideAndAppendsOutside) {
    const std::pair<std::int64_t, Numbers> cases[] = {{0, {9, 2, 3}},    {1, {1, 9, 3}},    {2, {1, 2, 9}},
                                                      {3, {1, 2, 3, 9}}, {7, {1, 2, 3, 9}}, {-1, {1, 2, 3, 9}}};
    for (const auto& [index, after] : cases) {
        auto list = make<VnIfcListAggrBounded<int, 3, 3>>(Numbers{1, 2, 3});
        EXPECT_EQ(list.putAt(index, 9), VN::eOk) << index;
        EXPECT_EQ(contents(list), after) << index;
    }
}

TEST(List, KeepsOrderAndDuplicatesAndNeverFindsNaN) {
    const auto list = make<Row>(std::vector<double>{3, 1, 3, Consts::VnRealUnset});
    EXPECT_EQ(list.count(), 4u);
    EXPECT_EQ(list[2], 3);
    EXPECT_TRUE(list.contains(1));
    EXPECT_FALSE(list.contains(Consts::VnRealUnset));
    VnIfcArray<double> array{8};
    list.exportTo(array);
    ASSERT_EQ(array.length(), 5u);
    EXPECT_EQ(array[0], 8);
    EXPECT_EQ(array[1], 3);
}

TEST(Aggregate, TellsWhatItIsAlsoWhenNil) {
    struct Case {
        const VnIfcAggr& aggregate;
        VnTypeCodeKind kind;
        bool ordered;
        std::uint32_t lower, upper;
    };
    const VnIfcUnOrderedAggr<VnDbObjectId> inverse;
    const VnIfcListAggrBounded<VnAnsiString, 1, 65536> names;
    const VnIfcListAggrCompound<VnIfcListAggr<double>> matrix;
    const VnIfcSetAggrBounded<Tagged, 1, 5> selects;
    const Pair pair;
    const Row row;
    const Case cases[] = {
        {inverse, VnTypeCodeKind::kEntity, false, 0, 65536},    {names, VnTypeCodeKind::kString, true, 1, 65536},
        {matrix, VnTypeCodeKind::kAggregation, true, 0, 65536}, {selects, VnTypeCodeKind::kSelect, false, 1, 5},
        {pair, VnTypeCodeKind::kInteger, false, 1, 2},          {row, VnTypeCodeKind::kReal, true, 2, 3}};
    for (const Case& c : cases) {
        EXPECT_TRUE(c.aggregate.isNil());
        VnIfcAggr copy = c.aggregate.clone();
        EXPECT_TRUE(copy.isNil());
        EXPECT_EQ(copy.createConstIterator(), nullptr);
        copy.createEmpty();
        EXPECT_FALSE(copy.isNil());
        EXPECT_TRUE(c.aggregate.isNil()) << "the prototype was changed";
        EXPECT_EQ(copy.count(), 0u);
        EXPECT_EQ(copy.elementKind(), c.kind);
        EXPECT_EQ(copy.isOrdered(), c.ordered);
        EXPECT_EQ(copy.lowerBound(), c.lower);
        EXPECT_EQ(copy.upperBound(), c.upper);
        copy.clear();
        EXPECT_TRUE(copy.isNil());
        EXPECT_EQ(copy.upperBound(), c.upper);
    }
}

TEST(Aggregate, AssignmentTakesContentsButNotBounds) {
    Pair pair;
    VnIfcSetAggr<int>& target = pair;
    auto source = make<VnIfcSetAggr<int>>(Numbers{4, 5, 6});
    target = source;
    EXPECT_EQ(contents(pair), (Numbers{4, 5, 6}));
    EXPECT_EQ(source.count(), 3u);
    target.clear();
    target = std::move(source);
    EXPECT_TRUE(source.isNil());
    EXPECT_EQ(contents(pair), (Numbers{4, 5, 6}));
    EXPECT_EQ(pair.upperBound(), 2u);
    EXPECT_EQ(pair.add(7), VN::eRefused);

    const Pair& same = pair;
    pair = same;
    EXPECT_EQ(contents(pair), (Numbers{4, 5, 6}));
    target = VnIfcSetAggr<int>();
    EXPECT_TRUE(pair.isNil());
    EXPECT_EQ(pair.upperBound(), 2u);
}

TEST(Aggregate, MayBeGivenItsOwnElements) {
    VnIfcListAggr<VnAnsiString> list;
    list.append("a text that is no constant");
    for (int i = 0; i < 20; ++i)
        list.append(list[0]);
    list.putAt(5, list[5]);
    list.assign(list.items());
    list.assign(list.items().subspan(1));
    ASSERT_EQ(list.count(), 20u);
    for (const VnAnsiString& text : list)
        EXPECT_EQ(text, "a text that is no constant");
}

TEST(Aggregate, AFailingCopyLeavesTheOldContents) {
    const std::vector<Tagged> before{{1, "one"}, {3, "three"}, {5, "five"}};
    const std::vector<Tagged> fresh{{9, "nine"}, {8, "eight"}, {9, "nine again"}};
    const auto failing = [](int copies, const std::function<void()>& act) {
        Tagged::copiesLeft = copies;
        EXPECT_THROW(act(), std::runtime_error);
        Tagged::copiesLeft = -1;
    };
    auto full = make<VnIfcSetAggr<Tagged>>(before);
    auto roomy = full;
    roomy.add({7, "seven"});
    roomy.remove({7, ""});
    auto list = make<VnIfcListAggr<Tagged>>(before);
    for (int copies : {0, 1}) {
        failing(copies, [&] { full.assign(fresh); });
        failing(copies, [&] { list.assign(fresh); });
        failing(copies, [&] { list = VnIfcListAggr<Tagged>(list); });
    }
    failing(0, [&] { full.add({2, "two"}); });
    failing(0, [&] { roomy.add({2, "two"}); });
    failing(0, [&] { list.append({2, "two"}); });
    failing(0, [&] { list.putAt(1, {2, "two"}); });
    EXPECT_EQ(contents(full), before);
    EXPECT_EQ(contents(roomy), before);
    EXPECT_EQ(contents(list), before);
}

TEST(Aggregate, RefusesMoreElementsThanItCanCount) {
    auto list = make<VnIfcListAggr<int>>(Numbers{1});
    EXPECT_THROW(list.assign(std::span<const int>(list.begin(), std::size_t{1} << 30)), std::length_error);
    EXPECT_EQ(contents(list), (Numbers{1}));
}

TEST(Iterator, WalksWithoutKnowingTheTypeAndSurvivesChanges) {
    auto list = make<VnIfcListAggr<Tagged>>(std::vector<Tagged>{{3, "c"}, {1, "a"}});
    const auto it = list.createIterator();
    ASSERT_NE(it, nullptr);
    EXPECT_EQ(it->currentAs<Tagged>().tag, "c");
    it->next();
    for (int i = 0; i < 10; ++i)
        list.append({i, "later"});
    EXPECT_EQ(it->currentAs<Tagged>().tag, "a");
    EXPECT_EQ(it->put(Tagged{2, "b"}), VN::eOk);
    EXPECT_EQ(list[1].tag, "b");
    EXPECT_EQ(it->remove(), VN::eRefused);
    list.clear();
    EXPECT_TRUE(it->atEnd());
    EXPECT_EQ(it->current(), nullptr);
    EXPECT_EQ(it->put(Tagged{2, "b"}), VN::eRefused);
}

TEST(Iterator, RemovesFromASetDownToTheLowerBound) {
    auto set = make<Pair>(Numbers{1, 2, 3});
    const auto it = set.createIterator();
    EXPECT_EQ(it->put(9), VN::eRefused);
    EXPECT_EQ(it->remove(), VN::eOk);
    EXPECT_EQ(it->currentAs<int>(), 2);
    it->next();
    EXPECT_EQ(it->remove(), VN::eOk);
    EXPECT_TRUE(it->atEnd());
    it->first();
    EXPECT_EQ(it->remove(), VN::eRefused);
    EXPECT_EQ(contents(set), (Numbers{2}));
}

TEST(Compound, ListsOfListsComeAndGoAsArraysOfArrays) {
    const VnIfcArray<VnIfcArray<double>> rows{{1, 2, 3}, {}, {4}};
    VnIfcListAggrCompound<VnIfcListAggr<double>> matrix;
    matrix.assign(rows);
    EXPECT_EQ(matrix.count(), 3u);
    EXPECT_EQ(matrix[0][2], 3);
    auto copy = matrix;
    matrix.clear();
    VnIfcArray<VnIfcArray<double>> out;
    copy.exportTo(out);
    EXPECT_EQ(out, rows);
    EXPECT_TRUE(copy.contains(make<VnIfcListAggr<double>>(std::vector<double>{4})));
    EXPECT_FALSE(copy.contains(make<VnIfcListAggr<double>>(std::vector<double>{4, 4})));
}

TEST(Aggregate, ComparesKindThenElementsThenLength) {
    const auto list = [](Numbers values) { return make<VnIfcListAggr<int>>(values); };
    EXPECT_EQ(list({1, 2}).compare(list({1, 2})), 0);
    EXPECT_LT(list({1, 2}).compare(list({1, 2, 0})), 0);
    EXPECT_GT(list({2}).compare(list({1, 2})), 0);
    EXPECT_EQ(VnIfcListAggr<int>().compare(list({})), 0);
    EXPECT_LT(list({5}).compare(make<VnIfcListAggr<double>>(std::vector<double>{1})), 0);
    VnIfcListAggrCompound<VnIfcListAggr<int>> left, right;
    left.assign({{1, 2}, {3}});
    right.assign({{1, 2}, {3, 1}});
    EXPECT_LT(left.compare(right), 0);
}

TEST(Aggregate, BehavesLikeStandardContainersUnderRandomChanges) {
    std::mt19937 random(4711);
    const auto upTo = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    VnIfcSetAggr<int> set;
    VnIfcListAggr<int> list;
    std::set<int> expectedSet;
    Numbers expectedList;
    for (int step = 0; step < 20000; ++step) {
        const int value = upTo(200), index = upTo(120) - 10;
        if (const int action = upTo(100); action == 0) {
            Numbers values(upTo(80));
            for (int& v : values)
                v = upTo(200);
            expectedSet = {values.begin(), values.end()};
            expectedList = values;
            set.assign(values);
            list.assign(std::move(values));
        } else if (action < 45) {
            EXPECT_EQ(set.remove(value), expectedSet.erase(value) ? VN::eOk : VN::eRefused);
            EXPECT_EQ(list.contains(value), std::ranges::count(expectedList, value) != 0);
        } else {
            EXPECT_EQ(set.add(value), VN::eOk);
            expectedSet.insert(value);
            list.putAt(index, value);
            if (index >= 0 && index < std::ssize(expectedList))
                expectedList[index] = value;
            else
                expectedList.push_back(value);
        }
        ASSERT_TRUE(std::ranges::equal(set, expectedSet)) << "step " << step;
        ASSERT_TRUE(std::ranges::equal(list, expectedList)) << "step " << step;
        ASSERT_EQ(set.contains(value), expectedSet.contains(value));
    }
}

} // namespace
