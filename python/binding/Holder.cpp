#include "Holder.h"

#include <algorithm>

namespace vnifc::python {

Holder::~Holder() { forgetKeys(); }

void Holder::forgetKeys() noexcept {
    for (CachedKey& each : m_keys) {
        Py_XDECREF(each.name);
        each = {};
    }
}

void Holder::throwClosed() { throw ClosedError("the model has been closed"); }

void Holder::wait() {
    while (m_busy) {
        const nb::gil_scoped_release released;
        std::unique_lock lock(m_mutex);
        m_idle.wait(lock, [&] { return !m_busy; });
    }
}

void Holder::close() {
    if (m_busy)
        wait();
    forgetKeys();
    std::optional<Model> model;
    m_model.swap(model);
    const nb::gil_scoped_release released; // a large model takes a while to go
    model.reset();
}

const AttributeKey& Holder::key(const Instance& instance, PyObject* name) {
    const VN_SDAI::VnIfcEntityBase* object = instance.core().openObject();
    const VN_SDAI::VnIfcEntityType* type = object->getInstanceType();
    const auto mixed =
        (reinterpret_cast<std::uintptr_t>(type) >> 6) * 31 + (reinterpret_cast<std::uintptr_t>(name) >> 4);
    CachedKey& cached = m_keys[mixed % kCachedKeys];
    if (cached.name == name && cached.type == type) [[likely]]
        return cached.key;
    Py_ssize_t size = 0;
    const char* text = PyUnicode_AsUTF8AndSize(name, &size);
    if (!text)
        throw nb::python_error();
    const std::string_view wanted(text, static_cast<std::size_t>(size));
    AttributeKey key;
    if (type && instance.has(wanted))
        key = m_model->key(instance.type(), wanted);
    Py_INCREF(name);
    PyObject* const old = cached.name;
    cached = {name, type, key};
    Py_XDECREF(old);
    return cached.key;
}

// ---- Busy

Busy::Busy(std::initializer_list<Holder*> models) : m_models(models) {
    std::ranges::sort(m_models);
    m_models.erase(std::unique(m_models.begin(), m_models.end()), m_models.end());
    const auto isBusy = [](const Holder* model) { return model->m_busy.load(); };
    for (auto busy = std::ranges::find_if(m_models, isBusy); busy != m_models.end();
         busy = std::ranges::find_if(m_models, isBusy))
        (*busy)->wait();
    for (Holder* model : m_models)
        model->use();
    for (Holder* model : m_models)
        model->m_busy = true;
    m_thread = PyEval_SaveThread();
}

Busy::~Busy() {
    for (Holder* model : m_models) {
        {
            const std::lock_guard lock(model->m_mutex);
            model->m_busy = false;
        }
        model->m_idle.notify_all();
    }
    PyEval_RestoreThread(m_thread);
}

// ---- Instances

void PyInstance::throwErased() const {
    throw NotFound("instance #" + std::to_string(instance.id()) + " has been erased, or is not in the file");
}

nb::object toPython(const SharedModel& model, const Instance& instance) {
    if (instance.core().isNull())
        return nb::none();
    return nb::cast(PyInstance{model, instance});
}

Instance& instanceOf(nb::handle object) { return nb::cast<PyInstance&>(object).use(); }

} // namespace vnifc::python
