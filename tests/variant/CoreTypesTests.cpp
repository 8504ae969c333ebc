// The core's own payload types: what converts to what, what is refused, and who owns what.
#include <VnIfcCore/VnIfcBoolean.h>
#include <VnIfcCore/VnIfcConsts.h>
#include <VnIfcCore/VnIfcEnumDescription.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcListAggr.h>
#include <VnIfcCore/VnIfcLogical.h>
#include <VnIfcCore/VnIfcSetAggr.h>
#include <VnIfcCore/VnIfcVariant.h>
#include <VnRx/VrString.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace VN_SDAI;

namespace {

using Variants = VnIfcArray<VnIfcVariant>;

template <class T>
const VnIfcVariantType& desc() {
    return VnIfcVariantType::Desc<T>::value();
}

std::string print(const VnIfcVariant& value, StringFormat format = StringFormat::kExchange) {
    VrString text;
    return value.toString(text, format) ? std::string(text.view()) : "?";
}

struct Conversion {
    VnIfcVariant from;
    const VnIfcVariantType& target;
    VnIfcVariant expected; ///< null: refused
};

void check(std::span<const Conversion> conversions) {
    for (const Conversion& each : conversions) {
        const VnIfcVariant before("as it was");
        VnIfcVariant result(before);
        const bool converted = each.from.convertTo(each.target, result);
        const std::wstring name = each.target.name();
        SCOPED_TRACE(print(each.from) + " to " + std::string(name.begin(), name.end()));
        EXPECT_EQ(converted, !each.expected.isNull());
        EXPECT_TRUE(result == (converted ? each.expected : before)) << print(result);
    }
}

VnIfcVariant textOf(const char* text) { return VnIfcVariant(text); }

} // namespace

TEST(CoreTypes, NumbersWidenWhenNothingIsLost) {
    const VnIfcVariant unsetReal(Consts::VnRealUnset);
    constexpr unsigned long kExact = 1ul << 53, kLargest = ~0ul;
    const Conversion conversions[] = {
        {12, desc<double>(), 12.0},
        {-12, desc<double>(), -12.0},
        {Consts::VnIntUnset, desc<double>(), unsetReal},
        {12, desc<unsigned long>(), 12ul},
        {-1, desc<unsigned long>(), {}},
        {Consts::VnIntUnset, desc<unsigned long>(), {}},
        {kExact, desc<double>(), 9007199254740992.0},
        {kExact + 1, desc<double>(), {}},
        {kLargest, desc<double>(), {}},
        {12ul, desc<int>(), {}},
        {12.0, desc<int>(), {}},
        {12.0, desc<unsigned long>(), {}},
        {VnIfcBoolean(true), desc<VnIfcLogical>(), VnIfcLogical(true)},
        {VnIfcBoolean(), desc<VnIfcLogical>(), VnIfcLogical()},
        {VnIfcLogical(true), desc<VnIfcBoolean>(), {}},
        {1, desc<VnIfcBoolean>(), {}},
        {1.0, desc<VnIfcLogical>(), {}},
        {VnIfcBoolean(true), desc<int>(), {}},
        {VnDbObjectId(), desc<int>(), {}},
        {VnIfcVariant(), desc<int>(), {}},
    };
    check(conversions);
}

TEST(CoreTypes, TextsAndSimpleValuesConvertInExchangeForm) {
    const VnIfcGUID guid("0123456789ABCDEFGHIJ_$");
    const VnAnsiString withNul(std::string_view("a\0b", 3));
    const Conversion conversions[] = {
        {12, desc<VnAnsiString>(), VnAnsiString("12")},
        {-12, desc<const char*>(), textOf("-12")},
        {1.5, desc<VrString>(), VrString("1.5")},
        {1.0, desc<VnAnsiString>(), VnAnsiString("1.")},
        {1e300, desc<VnAnsiString>(), VnAnsiString("1.E+300")},
        {18446744073709551615ul, desc<VnAnsiString>(), VnAnsiString("18446744073709551615")},
        {VnIfcBoolean(false), desc<VnAnsiString>(), VnAnsiString(".F.")},
        {VnIfcLogical(VnIfcLogical::Unknown), desc<VnAnsiString>(), VnAnsiString(".U.")},
        {Consts::VnIntUnset, desc<VnAnsiString>(), {}},
        {Consts::VnRealUnset, desc<VnAnsiString>(), {}},
        {HUGE_VAL, desc<VnAnsiString>(), {}},
        {VnIfcLogical(), desc<VnAnsiString>(), {}},
        {VnDbObjectId(), desc<VnAnsiString>(), {}},

        {"12", desc<int>(), 12},
        {"+12", desc<int>(), 12},
        {"12.", desc<int>(), {}},
        {" 12", desc<int>(), {}},
        {"", desc<int>(), {}},
        {"+-12", desc<int>(), {}},
        {"2147483646", desc<int>(), 2147483646},
        {"2147483647", desc<int>(), {}},
        {"2147483648", desc<int>(), {}},
        {"-1", desc<unsigned long>(), {}},
        {"1.5", desc<double>(), 1.5},
        {"12", desc<double>(), 12.0},
        {"1.E-3", desc<double>(), 0.001},
        {"nan", desc<double>(), {}},
        {"INF", desc<double>(), {}},
        {"1.E999", desc<double>(), {}},
        {"1.5x", desc<double>(), {}},
        {"0x1", desc<double>(), {}},
        {".T.", desc<VnIfcBoolean>(), VnIfcBoolean(true)},
        {".U.", desc<VnIfcBoolean>(), {}},
        {"T", desc<VnIfcBoolean>(), {}},
        {VrString(".u."), desc<VnIfcLogical>(), VnIfcLogical(VnIfcLogical::Unknown)},

        {VnAnsiString("\\X2\\00E9\\X0\\"), desc<VrString>(), VrString("é")},
        {VrString("é\\"), desc<VnAnsiString>(), VnAnsiString("\\X2\\00E9\\X0\\\\\\")},
        {VrString("é"), desc<const char*>(), textOf("\\X2\\00E9\\X0\\")},
        {VnAnsiString("\\S\\i"), desc<const char*>(), textOf("\\S\\i")},
        {VnAnsiString(VnUnsetText), desc<VrString>(), VrString("\xFF")},
        {VrString("\xFF"), desc<VnAnsiString>(), VnAnsiString(VnUnsetText)},
        {withNul, desc<const char*>(), {}},
        {static_cast<const char*>(nullptr), desc<VnAnsiString>(), {}},
        {guid, desc<VnAnsiString>(), VnAnsiString(guid.view())},
        {VnAnsiString(guid.view()), desc<VnIfcGUID>(), guid},
        {"0123456789ABCDEFGHIJ_$x", desc<VnIfcGUID>(), {}},
    };
    check(conversions);
}

TEST(CoreTypes, ContainersConvertElementByElement) {
    VnIfcListAggr<int> list;
    VnIfcSetAggr<int> set;
    VnIfcListAggr<VnAnsiString> nil;
    VnIfcListAggrCompound<VnIfcListAggr<double>> nested;
    list.assign(VnIfcArray<int>{3, 1, 3});
    set.assign(VnIfcArray<int>{3, 1, 3});
    nested.assign(VnIfcArray<VnIfcArray<double>>{{1, 2}, {}});
    VnIfcSelect* const noSelect = nullptr;
    const Conversion conversions[] = {
        {&list, desc<VnIfcArray<int>>(), VnIfcArray<int>{3, 1, 3}},
        {&list, desc<Variants>(), Variants{3, 1, 3}},
        {&list, desc<VnIfcAggr*>(), VnIfcVariant(static_cast<VnIfcAggr*>(&list))},
        {&list, desc<VnIfcArray<VnAnsiString>>(), VnIfcArray<VnAnsiString>{"3", "1", "3"}},
        {&list, desc<VnIfcArray<double>>(), VnIfcArray<double>{3, 1, 3}},
        {&list, desc<VnIfcArray<VnDbObjectId>>(), {}},
        {&list, desc<VnIfcArray<const char*>>(), {}},
        {&list, desc<VnIfcSetAggr<int>*>(), {}},
        {&list, desc<int>(), {}},
        {&set, desc<VnIfcArray<int>>(), VnIfcArray<int>{1, 3}},
        {&set, desc<Variants>(), Variants{1, 3}},
        {&set, desc<VnIfcArray<double>>(), {}},
        {&nil, desc<VnIfcArray<VnAnsiString>>(), VnIfcArray<VnAnsiString>()},
        {static_cast<VnIfcListAggr<int>*>(nullptr), desc<VnIfcArray<int>>(), {}},
        {static_cast<VnIfcListAggr<int>*>(nullptr), desc<VnIfcArray<double>>(), {}},
        {&nested, desc<VnIfcArray<VnIfcArray<double>>>(), VnIfcArray<VnIfcArray<double>>{{1, 2}, {}}},
        {static_cast<VnIfcAggr*>(&set), desc<VnIfcArray<double>>(), VnIfcArray<double>{1, 3}},
        {VnIfcArray<int>{1, 2}, desc<VnIfcArray<double>>(), VnIfcArray<double>{1, 2}},
        {VnIfcArray<double>{1, 2}, desc<VnIfcArray<int>>(), {}},
        {VnIfcArray<VnIfcArray<int>>{{1}}, desc<VnIfcArray<VnIfcArray<double>>>(), VnIfcArray<VnIfcArray<double>>{{1}}},
        {Variants{1, "2.5", 3ul}, desc<VnIfcArray<double>>(), VnIfcArray<double>{1, 2.5, 3}},
        {Variants{1, "x"}, desc<VnIfcArray<double>>(), {}},
        {Variants{1, VnIfcVariant()}, desc<VnIfcArray<int>>(), {}},
        {Variants{noSelect}, desc<VnIfcArray<VnIfcSelect*>>(), VnIfcArray<VnIfcSelect*>{noSelect}},
        {VnIfcArray<int>{1}, desc<int>(), {}},
    };
    check(conversions);
    // A nil aggregate has no variants to give, yet nothing failed.
    VnIfcVariant untouched(7);
    EXPECT_TRUE(VnIfcVariant(&nil).convertTo(desc<Variants>(), untouched));
    EXPECT_TRUE(untouched == VnIfcVariant(7));
}

TEST(CoreTypes, PrintForPeopleAndForFiles) {
    VnIfcListAggr<VnAnsiString> nil;
    const struct {
        VnIfcVariant value;
        const char* plain;
        const char* exchange;
    } cases[] = {
        {12, "12", "12"},
        {Consts::VnIntUnset, "", "$"},
        {2.0, "2.", "2."},
        {Consts::VnRealUnset, "", "$"},
        {VnIfcBoolean(true), ".T.", ".T."},
        {VnIfcLogical(), "", "$"},
        {"it's \\X\\E9", "it's é", "'it''s \\X\\E9'"},
        {VnAnsiString(VnUnsetText), "", "$"},
        {static_cast<const char*>(nullptr), "", "$"},
        {VrString("é"), "é", "'\\X2\\00E9\\X0\\'"},
        {VnIfcGUID(), "", "$"},
        {VnDbObjectId(), "", "$"},
        {Variants{1, "a", VnIfcArray<double>{1, 2}}, "(1,a,(1.,2.))", "(1,'a',(1.,2.))"},
        {&nil, "", "$"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(print(each.value, StringFormat::kPlain), each.plain);
        EXPECT_EQ(print(each.value), each.exchange);
    }
    VrString text("kept");
    EXPECT_FALSE(VnIfcVariant().toString(text));
    EXPECT_FALSE(desc<int>().toString(text, VnIfcVariant(1.0), StringFormat::kPlain));
    EXPECT_EQ(text, "kept");
}

TEST(CoreTypes, VariantsOwnTheirValuesAlone) {
    const VnIfcVariant originals[] = {VnAnsiString("a string long enough for the heap"),
                                      VrString(std::string(100, 'x')), VnIfcArray<VnAnsiString>{"a", "b"},
                                      Variants{Variants{VrString("inner")}, 1}};
    for (const VnIfcVariant& original : originals) {
        const std::string text = print(original);
        VnIfcVariant copy(original), assigned(1);
        assigned = copy;
        assigned = *&assigned;
        VnIfcVariant moved(std::move(copy));
        EXPECT_TRUE(copy.isNull());
        EXPECT_EQ(copy.payload(), nullptr);
        copy = std::move(moved);
        moved = original;
        copy = VnIfcVariant(2);
        EXPECT_NE(moved.payload(), original.payload());
        EXPECT_EQ(print(assigned), text);
        EXPECT_EQ(print(moved), text);
        EXPECT_TRUE(moved == original && moved == assigned);
    }
    // What a conversion points to lives with its result and with the copies of that.
    VnIfcVariant outlives;
    {
        VnIfcVariant converted;
        ASSERT_TRUE(
            VnIfcVariant(VrString("a text that stands in no other place")).convertTo(desc<const char*>(), converted));
        outlives = converted;
    }
    EXPECT_STREQ(*outlives.get<const char*>(), "a text that stands in no other place");
    VnIfcVariant array(VnIfcArray<double>{1});
    array.get<VnIfcArray<double>>()->append(2);
    EXPECT_EQ(array.get<VnIfcArray<double>>()->length(), 2u);
    EXPECT_EQ(array.get<VnIfcArray<int>>(), nullptr);
    VnIfcVariant heap(VrString("before"));
    const VrString after("after");
    heap.setHeapStorageValue(&after);
    EXPECT_EQ(*heap.get<VrString>(), "after");
    EXPECT_NE(heap.get<VrString>(), &after);
}

TEST(CoreTypes, UnsetValuesAreMadeFromTheDescriptorAlone) {
    const VnIfcVariantType* const types[] = {&desc<int>(),          &desc<double>(),       &desc<const char*>(),
                                             &desc<VnAnsiString>(), &desc<VnIfcBoolean>(), &desc<VnIfcGUID>(),
                                             &desc<VnDbObjectId>(), &desc<VnIfcLogical>()};
    for (const VnIfcVariantType* type : types) {
        VnIfcVariant value(1ul);
        ASSERT_TRUE(type->createVariant(value));
        EXPECT_EQ(value.type(), type);
        EXPECT_EQ(print(value), "$");
    }
    VnIfcVariant array;
    EXPECT_TRUE(desc<VnIfcArray<VnAnsiString>>().createVariant(array));
    EXPECT_EQ(print(array), "()");
}

TEST(CoreTypes, DescriptorsAreReleasedAndMadeAnew) {
    using Type = VnIfcVariantType::Desc<VnIfcArray<VnIfcGUID>>;
    EXPECT_EQ(&Type::value(), &Type::value());
    EXPECT_STREQ(Type::value().name(), L"SDAI_NAMESPACE_PFX VnIfcArray<VN_SDAI::VnIfcGUID>");
    Type::release();
    Type::release();
    EXPECT_STREQ(Type::value().name(), L"SDAI_NAMESPACE_PFX VnIfcArray<VN_SDAI::VnIfcGUID>");
    EXPECT_STREQ(desc<VnIfcListAggr<double>*>().name(), L"::VN_SDAI:: VnIfcListAggr<double>*");
}
