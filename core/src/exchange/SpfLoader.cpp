#include "SpfLoader.h"

#include "SpfDiagnostics.h"
#include "SpfInput.h"
#include "SpfInstanceReader.h"
#include "SpfScan.h"
#include "SpfStructure.h"
#include "WorkSharing.h"

#include <VnIfcCore/VnIfcRelease.h>
#include <VnIfcCore/VnIfcSchema.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <stdexcept>

namespace VN_SDAI {

namespace {

/// Reads one exchange file into one empty model.
class Loader {
public:
    Loader(VnIfcModel& model, SpfInput& input, const VnIfcReadOptions& options, const SpfSchemaChoice& choose,
           VnIfcFileResult& result)
        : m_model(model), m_data(model.data()), m_input(input), m_options(options), m_choose(choose), m_result(result),
          m_diagnostics(std::string(options.name), input.begin(), input.end(), options, result) {}

    void run() {
        const SpfSharing sharing{m_options.threads, m_options.piece};
        if (!m_structure.scan(m_input.begin(), m_input.end(), sharing, m_result.message)) {
            m_result.status = VN::eCannotRead;
            return;
        }
        m_data.header = std::move(m_structure.header);
        if (m_choose)
            m_data.schema = m_choose(m_data.header);
        std::ranges::stable_sort(m_structure.findings, {}, &SpfFinding::begin);
        checkSchema();
        makeSlots();
        if (!readInstances()) {
            m_model.clear();
            m_result.status = VN::eCancelled;
            m_result.message = "cancelled";
            return;
        }
        settleSelects();
        report();
        reportFindings(nullptr);
        m_data.count = m_count;
        std::ranges::stable_sort(m_data.places, {}, &VnIfcModel::Data::Place::number);
        for (const auto& reader : m_readers)
            for (auto& [slot, kept] : reader->kept())
                m_data.kept.emplace(slot, std::move(kept));
        for (const auto& arena : m_data.arenas)
            arena->forgetTexts();
        m_structure = {}; // inverse attributes take the memory that text and records leave
        m_input.release();
        if (m_options.inverses)
            m_model.setInverseCounterParts(m_options.threads);
    }

private:
    struct Block {
        std::size_t index = 0; // of its first instance
        std::vector<SpfRemark> remarks;
        std::atomic<bool> done = false;
    };

    /// How far numbers of neighbours are apart: the median of a sample.
    std::uint64_t usualGap() const {
        constexpr std::size_t kSample = 256;
        std::vector<std::uint64_t> gaps;
        for (std::size_t i = 0; i < m_structure.blocks.size(); i += 1 + m_structure.blocks.size() / kSample) {
            const SpfRecords::Block& block = m_structure.blocks[i];
            for (std::size_t k = 1; k < block.size(); k += 1 + block.size() * m_structure.blocks.size() / kSample) {
                const auto [low, high] = std::minmax(block.first[k - 1].number, block.first[k].number);
                gaps.push_back(high - low);
            }
        }
        if (gaps.empty())
            return 1;
        const auto middle = gaps.begin() + static_cast<std::ptrdiff_t>(gaps.size() / 2);
        std::nth_element(gaps.begin(), middle, gaps.end());
        return *middle;
    }

    /// Gives each instance its slot.
    void makeSlots() {
        const std::vector<SpfRecords::Block>& blocks = m_structure.blocks;
        m_blocks = std::vector<Block>(blocks.size());
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            m_blocks[i].index = m_count;
            m_count += blocks[i].size();
        }
        if (m_count == 0)
            return;
        const auto first = std::ranges::find_if(blocks, [](const auto& block) { return block.size() > 0; });
        m_data.slots.reserve({m_count, first->first->number, m_structure.largestNumber, usualGap()});
        const unsigned threads = threadsFor(m_options.threads, blocks.size());
        std::vector<SlotTable::Maker> makers(threads, SlotTable::Maker(m_data.slots));
        std::atomic<bool> isAnyWithout = false;
        shareWork(blocks.size(), threads, {}, [&](unsigned worker, std::size_t i) {
            SlotTable::Maker& maker = makers[worker];
            maker.begin(m_blocks[i].index);
            for (SpfInstance& instance : blocks[i]) {
                if (instance.number == 0)
                    isAnyWithout = true;
                setSlot(instance, instance.number == 0 ? nullptr : maker.make(instance.number));
            }
            maker.end();
            return true;
        });
        std::vector<SlotTable::Contested> contested = m_data.slots.finish(makers);
        if (!contested.empty() || isAnyWithout)
            houseHomeless(contested);
    }

    /// The first instance of a number has its slot; later ones, and those whose number does not fit, are kept under
    /// numbers that nothing uses.
    void houseHomeless(std::vector<SlotTable::Contested>& contested) {
        reserveReferences();
        for (std::size_t i = 0; i < m_blocks.size(); ++i) {
            for (SpfInstance& instance : m_structure.blocks[i]) {
                VnIfcInstanceSlot* const slot = slotOf(instance);
                const auto found = std::ranges::lower_bound(contested, slot, {}, &SlotTable::Contested::slot);
                const bool isContested = slot && found != contested.end() && found->slot == slot;
                if (slot && (!isContested || (slot->number != 0 && !std::exchange(found->isTaken, true))))
                    continue;
                if (isContested) {
                    SpfRemark remark{SpfRemark::kDuplicate};
                    remark.number = found->number;
                    remark.begin = m_structure.textOf(instance).data();
                    m_blocks[i].remarks.push_back(remark);
                }
                setSlot(instance, m_data.slotForInstance(m_data.nextNumber()));
            }
        }
    }

    /// An instance under a fresh number must not become what a reference to nothing refers to.
    void reserveReferences() {
        const char* const end = m_input.end();
        for (const char* p = m_input.begin(); (p = std::find(p, end, '#')) < end;) {
            std::uint64_t number = 0;
            if (spf::readNumber(++p, number))
                m_data.slotForReference(number);
        }
    }

    // From here on a record's number is in its slot, and the record holds the slot.
    static void setSlot(SpfInstance& instance, VnIfcInstanceSlot* slot) noexcept {
        instance.number = reinterpret_cast<std::uintptr_t>(slot);
    }
    static VnIfcInstanceSlot* slotOf(const SpfInstance& instance) noexcept {
        return reinterpret_cast<VnIfcInstanceSlot*>(static_cast<std::uintptr_t>(instance.number));
    }

    bool readInstances() {
        const unsigned threads = threadsFor(m_options.threads, m_blocks.size());
        for (unsigned i = 0; i < threads; ++i) {
            m_data.arenas.push_back(std::make_unique<VnIfcArena>());
            m_readers.push_back(std::make_unique<SpfInstanceReader>(m_data, m_options.strict));
            m_readers.back()->slotsAreMade();
        }
        return shareWork(m_blocks.size(), threads, m_options.progress, [&](unsigned worker, std::size_t block) {
            readBlock(*m_readers[worker], *m_data.arenas[worker], block);
            if (worker == 0)
                report();
            return true;
        });
    }

    /// Now that all instances are there, so that asking a select changes nothing: several threads may ask.
    void settleSelects() {
        shareWork(m_readers.size(), static_cast<unsigned>(m_readers.size()), {}, [&](unsigned, std::size_t reader) {
            for (VnIfcEntityBase* instance : m_readers[reader]->pending())
                instance->settleSelects();
            return true;
        });
    }

    void readBlock(SpfInstanceReader& reader, VnIfcArena& arena, std::size_t block) {
        const VnIfcArenaScope scope(arena);
        for (const SpfInstance& instance : m_structure.blocks[block])
            reader.read(m_structure.textOf(instance), slotOf(instance));
        std::vector<SpfRemark>& remarks = m_blocks[block].remarks;
        std::ranges::move(reader.remarks(), std::back_inserter(remarks));
        reader.remarks().clear();
        std::ranges::stable_sort(remarks, {}, &SpfRemark::begin);
        m_blocks[block].done.store(true, std::memory_order_release);
    }

    /// Reports what is known up to the first block that is not done, in the order of the text, whose part before is
    /// then given back. Called by the first worker only.
    void report() {
        for (; m_reported < m_blocks.size() && m_blocks[m_reported].done.load(std::memory_order_acquire);
             ++m_reported) {
            std::vector<SpfRemark> remarks = std::move(m_blocks[m_reported].remarks);
            if (m_options.places)
                takePlaces(m_reported, remarks);
            for (const SpfRemark& remark : remarks)
                reportRemark(remark);
            m_reportedEnd = endOf(*(m_structure.blocks[m_reported].end() - 1));
            m_structure.release(m_reported);
        }
        if (m_reported == 0 || m_reported == m_blocks.size())
            return;
        // No further: the number of the next instance stands before its text, and its place is still to be found.
        reportFindings(m_reportedEnd);
        if (m_options.diagnostics || m_options.places)
            m_diagnostics.pass(m_reportedEnd);
        m_input.release(m_reportedEnd);
    }

    const char* endOf(const SpfInstance& instance) const noexcept {
        const std::string_view text = m_structure.textOf(instance);
        return text.data() + text.size();
    }

    /// The "#" of the instance whose text begins at `text`; `from` is where the one before it ends.
    static const char* startOf(const char* from, const char* text) noexcept {
        const char* nearest = text - 1;
        bool mayBeInComment = false;
        for (; nearest > from && *nearest != '#'; --nearest)
            mayBeInComment = mayBeInComment || *nearest == '/';
        if (!mayBeInComment)
            return nearest;
        for (const char* p = from; (p = spf::skipBlanks(p, text)) < text; ++p) {
            if (*p != '#')
                continue;
            const char* behind = p + 1;
            while (spf::isDigit(*behind))
                ++behind;
            behind = spf::skipBlanks(behind, text);
            if (behind < text && *behind == '=' && spf::skipBlanks(behind + 1, text) == text)
                return p;
        }
        return nearest;
    }

    void reportRemark(const SpfRemark& remark) {
        reportFindings(remark.begin);
        m_diagnostics.report(remark);
    }

    /// Remembers where the instances of a block stand. Lines are counted once, hence the remarks on the way are
    /// reported.
    void takePlaces(std::size_t block, std::vector<SpfRemark>& remarks) {
        auto remark = remarks.begin();
        const char* from = m_reportedEnd ? m_reportedEnd : m_input.begin();
        for (const SpfInstance& instance : m_structure.blocks[block]) {
            const char* const position = startOf(from, m_structure.textOf(instance).data());
            from = endOf(instance);
            for (; remark != remarks.end() && remark->begin < position; ++remark)
                reportRemark(*remark);
            reportFindings(position);
            VnIfcModel::Data::Place place{slotOf(instance)->number, 0, 0};
            m_diagnostics.locate(position, place.line, place.column);
            m_data.places.push_back(place);
        }
        remarks.erase(remarks.begin(), remark);
    }

    /// Reports the findings up to a position of the text; null stands for its end.
    void reportFindings(const char* position) {
        const auto& findings = m_structure.findings;
        for (; m_finding < findings.size() && (!position || findings[m_finding].begin <= position); ++m_finding)
            m_diagnostics.report(findings[m_finding]);
    }

    /// Tells when the classes of the model are not exactly those of the release that FILE_SCHEMA names.
    void checkSchema() {
        const std::string own(m_data.schema->name().view());
        const std::vector<std::string> names = m_data.header.schemas();
        if (std::ranges::any_of(names, [&](const std::string& name) { return isSameName(name, own); }))
            return;
        const std::string found = names.empty() ? "no FILE_SCHEMA" : "FILE_SCHEMA " + names.front();
        const VnIfcReleaseChoice choice = vnChooseRelease(names);
        if (choice.fit == VnIfcReleaseFit::kExact && choice.release->name == own)
            return;
        m_data.isOfOtherRelease = choice.fit == VnIfcReleaseFit::kDiffers ||
                                  (choice.fit != VnIfcReleaseFit::kUnknown && choice.release->name != own);
        if (choice.fit != VnIfcReleaseFit::kUnknown && choice.release->name != own)
            return tellSchema(VnIfcDiagnostic::kWarning,
                              "FILE_SCHEMA " + choice.schema + ", a file for the classes of " +
                                  std::string(choice.release->name),
                              "the schema " + own);
        switch (choice.fit) {
        case VnIfcReleaseFit::kServed:
            return tellSchema(VnIfcDiagnostic::kInfo,
                              "FILE_SCHEMA " + choice.schema + ", which is read with the classes of " + own);
        case VnIfcReleaseFit::kDiffers:
            return tellSchema(VnIfcDiagnostic::kWarning, "FILE_SCHEMA " + choice.schema +
                                                             ", which differs from the release " + own +
                                                             " whose classes it is read with");
        default:
            return tellSchema(VnIfcDiagnostic::kWarning, found, "the schema " + own);
        }
    }

    static bool isSameName(std::string_view left, std::string_view right) noexcept {
        return VnAnsiString(left).compareNoCase(right) == 0;
    }

    void tellSchema(VnIfcDiagnostic::Severity severity, std::string found, std::string expected = "") {
        m_diagnostics.report(severity, "schema", m_input.begin(), std::move(found), std::move(expected));
    }

    VnIfcModel& m_model;
    VnIfcModel::Data& m_data;
    SpfInput& m_input;
    const VnIfcReadOptions& m_options;
    const SpfSchemaChoice& m_choose;
    VnIfcFileResult& m_result;
    SpfDiagnostics m_diagnostics;
    SpfStructure m_structure;
    std::vector<std::unique_ptr<SpfInstanceReader>> m_readers;
    std::vector<Block> m_blocks;         // beside those of the structure
    std::size_t m_count = 0;             // of instances
    std::size_t m_reported = 0;          // blocks
    const char* m_reportedEnd = nullptr; // of the text of the last one
    std::size_t m_finding = 0;           // the next one to report
};

/// A text or list that is longer than memory can hold one is no reason to end the host.
void load(VnIfcModel& model, SpfInput& input, const VnIfcReadOptions& options, const SpfSchemaChoice& choose,
          VnIfcFileResult& result) try {
    Loader(model, input, options, choose, result).run();
} catch (const std::length_error& tooLong) {
    model.clear();
    result.status = VN::eCannotRead;
    result.message = tooLong.what();
}

bool refuseUsedModel(const VnIfcModel& model, VnIfcFileResult& result) {
    if (model.data().slots.size() == 0)
        return false;
    result.status = VN::eRefused;
    result.message = "the model holds instances already";
    return true;
}

} // namespace

VnIfcFileResult spfReadFile(VnIfcModel& model, const std::filesystem::path& path, const VnIfcReadOptions& options,
                            const SpfSchemaChoice& choose) {
    VnIfcFileResult result;
    if (refuseUsedModel(model, result))
        return result;
    SpfInput input;
    result.status = input.readFile(path, options.threads, result.message);
    if (!result)
        return result;
    result.bytes = input.size();
    VnIfcReadOptions named = options;
    const std::string name = path.string();
    if (named.name.empty())
        named.name = name;
    load(model, input, named, choose, result);
    return result;
}

VnIfcFileResult spfReadText(VnIfcModel& model, std::string_view text, const VnIfcReadOptions& options,
                            const SpfSchemaChoice& choose) {
    VnIfcFileResult result;
    if (refuseUsedModel(model, result))
        return result;
    SpfInput input;
    input.copyFrom(text);
    result.bytes = input.size();
    load(model, input, options, choose, result);
    return result;
}

VnIfcFileResult VnIfcModel::readFile(const std::filesystem::path& path, const VnIfcReadOptions& options) {
    return spfReadFile(*this, path, options);
}

VnIfcFileResult VnIfcModel::readText(std::string_view text, const VnIfcReadOptions& options) {
    return spfReadText(*this, text, options);
}

} // namespace VN_SDAI
