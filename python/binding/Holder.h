#pragma once
#include <vnifc/Model.h>

#include <nanobind/nanobind.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace nb = nanobind;

namespace vnifc::python {

/// What is to be raised as vnifc.Closed.
class ClosedError : public Error {
public:
    using Error::Error;
};

/// What is to be raised as vnifc.AttributeError.
class NoAttribute : public Error {
public:
    using Error::Error;
};

/// What is to be raised as vnifc.InstanceNotFound.
class NoInstance : public NotFound {
public:
    using NotFound::NotFound;
};

/// What is to be raised as vnifc.WriteError.
class WriteError : public Error {
public:
    using Error::Error;
};

/// A model as Python objects share it: the model itself, its instances, tables being made. All of it is used with the
/// GIL held; who lets go of the GIL while working on the model (Busy) makes others wait.
class Holder {
public:
    explicit Holder(Model model) : m_model(std::move(model)) {}
    ~Holder();
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    /// The model when nobody else works on it. Throws ClosedError. Waits without the GIL.
    Model& use() {
        if (m_busy.load(std::memory_order_acquire)) [[unlikely]]
            wait();
        if (!m_model) [[unlikely]]
            throwClosed();
        return *m_model;
    }
    /// The model for the thread that keeps it by Busy.
    Model& owned() noexcept { return *m_model; }
    bool isOpen() const noexcept { return m_model.has_value(); }
    void close();

    /// A name that was looked up for the entity of an instance; the key is empty where it has none of that name.
    const AttributeKey& key(const Instance& instance, PyObject* name);

private:
    friend class Busy;

    struct CachedKey {
        PyObject* name = nullptr; ///< owned, so that no other name takes its place in memory
        const VN_SDAI::VnIfcEntityType* type = nullptr;
        AttributeKey key;
    };
    static constexpr std::size_t kCachedKeys = 512;

    void wait();
    void forgetKeys() noexcept;
    [[noreturn]] static void throwClosed();

    std::optional<Model> m_model;
    std::array<CachedKey, kCachedKeys> m_keys{};
    std::atomic<bool> m_busy = false;
    std::mutex m_mutex;
    std::condition_variable m_idle;
};

using SharedModel = std::shared_ptr<Holder>;

/// Keeps models for one thread and lets go of the GIL, until it goes. Takes all of them at once, so that no two threads
/// wait for each other; one model may be named twice.
class Busy {
public:
    explicit Busy(std::initializer_list<Holder*> models);
    ~Busy();
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

private:
    std::vector<Holder*> m_models;
    PyThreadState* m_thread;
};

/// An instance as Python has it. It keeps its model alive.
struct PyInstance {
    SharedModel model;
    Instance instance;

    /// The instance, when its model is open and idle. Throws ClosedError; NotFound for what has been erased.
    Instance& use() {
        model->use();
        if (!instance) [[unlikely]]
            throwErased();
        return instance;
    }
    [[noreturn]] void throwErased() const;
};

/// The Python object of an instance; None for no instance.
nb::object toPython(const SharedModel& model, const Instance& instance);

/// An instance given by Python, of an open model.
Instance& instanceOf(nb::handle object);

} // namespace vnifc::python
