#include "Arrow.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <string>
#include <vector>

namespace nb = nanobind;

namespace vnifc::python {

namespace {

// The structures of the Arrow C data and stream interfaces, as their specification declares them; the names of their
// members are part of it.
struct ArrowSchema {
    const char* format;
    const char* name;
    const char* metadata;
    std::int64_t flags;
    std::int64_t n_children;
    ArrowSchema** children;
    ArrowSchema* dictionary;
    void (*release)(ArrowSchema*);
    void* private_data;
};

struct ArrowArray {
    std::int64_t length;
    std::int64_t null_count;
    std::int64_t offset;
    std::int64_t n_buffers;
    std::int64_t n_children;
    const void** buffers;
    ArrowArray** children;
    ArrowArray* dictionary;
    void (*release)(ArrowArray*);
    void* private_data;
};

struct ArrowArrayStream {
    int (*get_schema)(ArrowArrayStream*, ArrowSchema*);
    int (*get_next)(ArrowArrayStream*, ArrowArray*);
    const char* (*get_last_error)(ArrowArrayStream*);
    void (*release)(ArrowArrayStream*);
    void* private_data;
};

constexpr std::int64_t kNullable = 2;

/// What hangs on a schema or array: its children, of which consumers may take some away and release them themselves,
/// and the table that an array's buffers are of.
template <class T>
struct Held {
    std::string name;
    std::vector<T> nodes;
    std::vector<T*> children;
    T dictionary{};
    std::array<const void*, 3> buffers{};
    std::shared_ptr<const ColumnTable> table;
};

template <class T>
void release(T* node) {
    auto* held = static_cast<Held<T>*>(node->private_data);
    for (T& child : held->nodes)
        if (child.release)
            child.release(&child);
    if (held->dictionary.release)
        held->dictionary.release(&held->dictionary);
    node->release = nullptr;
    delete held;
}

template <class T>
Held<T>& hold(T& node, std::size_t children) {
    node = T{};
    auto held = std::make_unique<Held<T>>();
    held->nodes.resize(children);
    for (T& child : held->nodes)
        held->children.push_back(&child);
    node.n_children = static_cast<std::int64_t>(children);
    node.children = children > 0 ? held->children.data() : nullptr;
    node.release = &release<T>;
    node.private_data = held.get();
    return *held.release();
}

const char* formatOf(ColumnKind kind) {
    switch (kind) {
    case ColumnKind::kId:
        return "L";
    case ColumnKind::kInteger:
        return "l";
    case ColumnKind::kReal:
        return "g";
    case ColumnKind::kBoolean:
        return "b";
    case ColumnKind::kText:
        return "U";
    case ColumnKind::kCategory:
        return "i";
    case ColumnKind::kList:
        return "+L";
    }
    return "n";
}

void makeSchema(ArrowSchema& schema, const Column& column) {
    Held<ArrowSchema>& held = hold(schema, column.kind() == ColumnKind::kList ? 1 : 0);
    held.name = column.name();
    schema.name = held.name.c_str();
    schema.format = formatOf(column.kind());
    schema.flags = kNullable;
    if (column.kind() == ColumnKind::kList)
        makeSchema(held.nodes.front(), *column.child());
    if (column.kind() == ColumnKind::kCategory) {
        makeSchema(held.dictionary, *column.child());
        schema.dictionary = &held.dictionary;
    }
}

void makeSchema(ArrowSchema& schema, const ColumnTable& table) {
    Held<ArrowSchema>& held = hold(schema, table.columns.size());
    schema.format = "+s";
    schema.name = held.name.c_str();
    for (std::size_t i = 0; i < table.columns.size(); ++i)
        makeSchema(held.nodes[i], table.columns[i]);
}

// Consumers want a pointer even to a buffer of nothing.
alignas(64) constexpr std::array<char, 64> kNothing{};

const void* dataOf(const ColumnBuffer& buffer) { return buffer.data() ? buffer.data() : kNothing.data(); }

void makeArray(ArrowArray& array, const Column& column, const std::shared_ptr<const ColumnTable>& table) {
    const bool isList = column.kind() == ColumnKind::kList;
    Held<ArrowArray>& held = hold(array, isList ? 1 : 0);
    held.table = table;
    array.length = static_cast<std::int64_t>(column.size());
    array.null_count = static_cast<std::int64_t>(column.nulls());
    array.buffers = held.buffers.data();
    held.buffers[0] = column.nulls() > 0 ? column.valid().data() : nullptr;
    array.n_buffers = 2;
    if (isList) {
        held.buffers[1] = dataOf(column.offsets());
        makeArray(held.nodes.front(), *column.child(), table);
    } else if (column.kind() == ColumnKind::kText) {
        held.buffers[1] = dataOf(column.offsets());
        held.buffers[2] = dataOf(column.values());
        array.n_buffers = 3;
    } else {
        held.buffers[1] = dataOf(column.values());
    }
    if (column.kind() == ColumnKind::kCategory) {
        makeArray(held.dictionary, *column.child(), table);
        array.dictionary = &held.dictionary;
    }
}

void makeArray(ArrowArray& array, const std::shared_ptr<const ColumnTable>& table) {
    Held<ArrowArray>& held = hold(array, table->columns.size());
    held.table = table;
    array.length = static_cast<std::int64_t>(table->rows);
    array.n_buffers = 1;
    array.buffers = held.buffers.data();
    for (std::size_t i = 0; i < table->columns.size(); ++i)
        makeArray(held.nodes[i], table->columns[i], table);
}

struct Stream {
    std::shared_ptr<const ColumnTable> table;
    bool isDone = false;
};

Stream& streamOf(ArrowArrayStream* stream) { return *static_cast<Stream*>(stream->private_data); }

template <class Make>
int guarded(Make make) noexcept {
    try {
        make();
        return 0;
    } catch (...) {
        return ENOMEM;
    }
}

void releaseStream(ArrowArrayStream* stream) {
    delete &streamOf(stream);
    stream->release = nullptr;
}

int nextBatch(ArrowArrayStream* stream, ArrowArray* array) {
    return guarded([&] {
        *array = ArrowArray{}; // released: the end
        Stream& state = streamOf(stream);
        if (!state.isDone)
            makeArray(*array, state.table);
        state.isDone = true;
    });
}

int schemaOf(ArrowArrayStream* stream, ArrowSchema* schema) {
    return guarded([&] { makeSchema(*schema, *streamOf(stream).table); });
}

/// A capsule that owns a structure, and releases it unless a consumer has taken what is in it.
template <class T>
nb::object capsule(std::unique_ptr<T> owned, const char* name) {
    PyObject* result = PyCapsule_New(owned.get(), name, [](PyObject* self) {
        auto* held = static_cast<T*>(PyCapsule_GetPointer(self, PyCapsule_GetName(self)));
        if (held->release)
            held->release(held);
        delete held;
    });
    if (!result) {
        owned->release(owned.get());
        throw nb::python_error();
    }
    static_cast<void>(owned.release());
    return nb::steal(result);
}

} // namespace

nb::object arrowStream(const PyTable& table) {
    auto stream = std::make_unique<ArrowArrayStream>();
    *stream = {schemaOf, nextBatch, [](ArrowArrayStream*) -> const char* { return "out of memory"; }, releaseStream,
               new Stream{table.table}};
    return capsule(std::move(stream), "arrow_array_stream");
}

nb::object arrowSchema(const PyTable& table) {
    auto schema = std::make_unique<ArrowSchema>();
    makeSchema(*schema, *table.table);
    return capsule(std::move(schema), "arrow_schema");
}

} // namespace vnifc::python
