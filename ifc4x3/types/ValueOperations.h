#pragma once
// What the operations on attributes need to know of the C++ types of members: one table per element type of aggregates
// and per select, so that the code that uses them exists once.
#include <IFC4X3/Select.h>

#include <exchange/AggregateFields.h>

namespace IFC4X3 {

/// Operations on aggregates of one element type; `aggregate` is of type VnIfcAggrOf<T>.
struct AggregateOperations {
    bool (*read)(VN_SDAI::VnIfcAggr& aggregate, VN_SDAI::VnSpfFilerBase& filer);
    void (*write)(const VN_SDAI::VnIfcAggr& aggregate, VN_SDAI::VnSpfFilerBase& filer, bool isBinary);
};

template <class T>
inline constexpr AggregateOperations aggregateOperations{&readElements<T>, &writeElements<T>};

/// Operations on members of one select class.
struct SelectOperations {
    const SelectClass* selectClass;
};

template <class S>
inline constexpr SelectOperations selectOperations{&S::s_class};

}  // namespace IFC4X3
