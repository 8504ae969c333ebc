#include "SpfDiagnostics.h"
#include "SpfInput.h"
#include "SpfInstanceReader.h"
#include "SpfStructure.h"
#include "WorkSharing.h"

#include <VnIfcCore/VnIfcSchema.h>

#include <algorithm>

namespace VN_SDAI {

namespace {

// Large enough that taking a block costs nothing, small enough that threads end together.
constexpr std::size_t kBlock = 2048;

/// Reads one exchange file into one empty model.
class Loader {
public:
    Loader(VnIfcModel& model, const SpfInput& input, const VnIfcReadOptions& options, VnIfcFileResult& result)
        : m_model(model),
          m_data(model.data()),
          m_input(input),
          m_options(options),
          m_result(result),
          m_diagnostics(std::string(options.name), input.begin(), input.end(), options.diagnostics, result) {}

    void run() {
        if (!m_structure.scan(m_input.begin(), m_input.end(), m_result.message)) {
            m_result.status = VN::eCannotRead;
            return;
        }
        m_data.header = std::move(m_structure.header);
        makeSlots();
        if (!readInstances()) {
            m_model.clear();
            m_result.status = VN::eCancelled;
            m_result.message = "cancelled";
            return;
        }
        m_data.count = m_slots.size();
        finish();
        if (m_options.inverses) m_model.setInverseCounterParts();
    }

private:
    void makeSlots() {
        const std::vector<SpfInstance>& instances = m_structure.instances;
        m_data.slots.reserve(instances.size(), m_structure.largestNumber);
        m_slots.reserve(instances.size());
        std::vector<std::size_t> homeless;
        for (std::size_t i = 0; i < instances.size(); ++i) {
            const std::uint64_t number = instances[i].number;
            const bool taken = number == 0 || m_data.slots.find(number);
            if (taken) homeless.push_back(i);
            m_slots.push_back(taken ? nullptr : m_data.slotForInstance(number));
        }
        // The first instance of a number has it; later ones are kept under numbers that nobody uses.
        for (const std::size_t i : homeless) {
            const std::uint64_t before = instances[i].number;
            m_slots[i] = m_data.slotForInstance(m_data.nextNumber());
            SpfRemark remark{before ? SpfRemark::kDuplicate : SpfRemark::kRenumbered};
            remark.number = m_slots[i]->number;
            remark.begin = instances[i].begin;
            m_remarks.push_back(remark);
        }
    }

    bool readInstances() {
        const std::vector<SpfInstance>& instances = m_structure.instances;
        const std::size_t blocks = (instances.size() + kBlock - 1) / kBlock;
        const unsigned threads = threadsFor(m_options.threads, blocks);
        for (unsigned i = 0; i < threads; ++i) {
            m_data.arenas.push_back(std::make_unique<VnIfcArena>());
            m_readers.push_back(std::make_unique<SpfInstanceReader>(m_data, *m_data.arenas.back()));
        }
        return shareWork(blocks, threads, m_options.progress, [&](unsigned worker, std::size_t block) {
            const std::size_t last = std::min(instances.size(), (block + 1) * kBlock);
            for (std::size_t i = block * kBlock; i < last; ++i) m_readers[worker]->read(instances[i], m_slots[i]);
        });
    }

    void finish() {
        for (const auto& reader : m_readers) {
            std::ranges::move(reader->remarks(), std::back_inserter(m_remarks));
            for (auto& [slot, kept] : reader->kept()) m_data.kept.emplace(slot, std::move(kept));
        }
        std::ranges::stable_sort(m_remarks, {}, &SpfRemark::begin);
        std::ranges::stable_sort(m_structure.findings, {}, &SpfFinding::begin);
        checkSchema();
        auto finding = m_structure.findings.begin();
        for (const SpfRemark& remark : m_remarks) {
            for (; finding != m_structure.findings.end() && finding->begin <= remark.begin; ++finding)
                m_diagnostics.report(*finding);
            m_diagnostics.report(remark);
        }
        for (; finding != m_structure.findings.end(); ++finding) m_diagnostics.report(*finding);
    }

    void checkSchema() {
        const std::string_view expected = m_data.schema->name().view();
        const std::vector<std::string> names = m_data.header.schemas();
        for (const std::string& name : names) {
            // Releases of a schema append to its name: IFC4X3_ADD2.
            std::string upper = name.substr(0, expected.size());
            for (char& c : upper) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 0x20) : c;
            if (upper == expected) return;
        }
        m_diagnostics.report(VnIfcDiagnostic::kWarning, "schema", m_input.begin(),
                             names.empty() ? "no FILE_SCHEMA" : "FILE_SCHEMA " + names.front(),
                             "the schema " + std::string(expected));
    }

    VnIfcModel& m_model;
    VnIfcModel::Data& m_data;
    const SpfInput& m_input;
    const VnIfcReadOptions& m_options;
    VnIfcFileResult& m_result;
    SpfDiagnostics m_diagnostics;
    SpfStructure m_structure;
    std::vector<VnIfcInstanceSlot*> m_slots;
    std::vector<std::unique_ptr<SpfInstanceReader>> m_readers;
    std::vector<SpfRemark> m_remarks;
};

bool refuseUsedModel(const VnIfcModel& model, VnIfcFileResult& result) {
    if (model.data().slots.size() == 0) return false;
    result.status = VN::eRefused;
    result.message = "the model holds instances already";
    return true;
}

}  // namespace

VnIfcFileResult VnIfcModel::readFile(const std::filesystem::path& path, const VnIfcReadOptions& options) {
    VnIfcFileResult result;
    if (refuseUsedModel(*this, result)) return result;
    SpfInput input;
    result.status = input.readFile(path, result.message);
    if (!result) return result;
    result.bytes = input.size();
    VnIfcReadOptions named = options;
    const std::string name = path.string();
    if (named.name.empty()) named.name = name;
    Loader(*this, input, named, result).run();
    return result;
}

VnIfcFileResult VnIfcModel::readText(std::string_view text, const VnIfcReadOptions& options) {
    VnIfcFileResult result;
    if (refuseUsedModel(*this, result)) return result;
    SpfInput input;
    input.copyFrom(text);
    result.bytes = input.size();
    Loader(*this, input, options, result).run();
    return result;
}

}  // namespace VN_SDAI
