#include "SpfDiagnostics.h"
#include "SpfInstanceWriter.h"
#include "WorkSharing.h"

#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnIfcCore/VnSafeFile.h>

#include <condition_variable>
#include <cstring>
#include <system_error>
#include <utility>

namespace VN_SDAI {

namespace {

constexpr std::size_t kBlock = 16384; // slots

std::string headerText(const VnIfcModel& model) {
    std::string text = "ISO-10303-21;\nHEADER;\n";
    const bool isEmpty = model.header().entries().empty();
    const VnIfcHeader standard =
        isEmpty ? VnIfcHeader::standard(model.schema()->name().view(), "", VnIfcHeader::timeStamp()) : VnIfcHeader();
    for (const VnIfcHeader::Entry& entry : (isEmpty ? standard : model.header()).entries())
        text += entry.keyword + '(' + entry.parameters + ");\n";
    return text + "ENDSEC;\nDATA;\n";
}

constexpr std::string_view kEnd = "ENDSEC;\nEND-ISO-10303-21;\n";

/// Lets pieces that several threads make go out in order.
template <class Sink>
class OrderedSink {
public:
    explicit OrderedSink(Sink& sink) noexcept : m_sink(sink) {}

    /// Makes and writes a piece as soon as all earlier ones are out. False when this or an earlier one failed.
    template <class Make>
    bool write(std::size_t piece, Make make) try {
        return writeText(piece, make());
    } catch (...) {
        fail(); // or others would wait for this piece for ever
        throw;
    }

private:
    bool writeText(std::size_t piece, std::string_view text) {
        std::unique_lock lock(m_mutex);
        m_moved.wait(lock, [&] { return m_next == piece || m_failed; });
        if (m_failed)
            return false;
        // Nobody else gets past the wait until the next piece is announced.
        lock.unlock();
        const bool written = m_sink(text);
        lock.lock();
        m_failed = !written;
        m_next = piece + 1;
        m_moved.notify_all();
        return written;
    }

    void fail() {
        const std::lock_guard lock(m_mutex);
        m_failed = true;
        m_moved.notify_all();
    }

    Sink& m_sink;
    std::mutex m_mutex;
    std::condition_variable m_moved;
    std::size_t m_next = 0;
    bool m_failed = false;
};

constexpr const char* codeOf(VnSpfUnwritable why) noexcept {
    switch (why) {
    case VnSpfUnwritable::kForeignReference:
        return "foreign-reference";
    case VnSpfUnwritable::kNotFinite:
        return "not-finite";
    case VnSpfUnwritable::kNoValue:
        return "no-value";
    default:
        return "text";
    }
}

/// True when a value does not get into the file.
constexpr bool isLoss(VnSpfUnwritable why) noexcept {
    return why == VnSpfUnwritable::kForeignReference || why == VnSpfUnwritable::kNotFinite;
}

VnIfcDiagnostic diagnosticOf(const SpfWriteRemark& remark) {
    VnIfcDiagnostic diagnostic;
    diagnostic.severity = isLoss(remark.why) ? VnIfcDiagnostic::kError : VnIfcDiagnostic::kWarning;
    diagnostic.code = codeOf(remark.why);
    diagnostic.instance = remark.slot->number;
    const VnIfcEntityType* type = remark.slot->object()->getInstanceType();
    diagnostic.keyword = type->name();
    if (const VnIfcAttributeDefinition* attribute = spfAttributeAt(type, remark.position))
        diagnostic.attribute = attribute->name();
    switch (remark.why) {
    case VnSpfUnwritable::kForeignReference:
        diagnostic.found = "an instance of another model";
        diagnostic.expected = "one of this model; $ is written";
        break;
    case VnSpfUnwritable::kNotFinite:
        diagnostic.found = "an infinite number";
        diagnostic.expected = "a number that a file can hold; $ is written";
        break;
    case VnSpfUnwritable::kNoValue:
        diagnostic.found = "a select whose member has no value";
        diagnostic.expected = "a value, or no member; $ is written";
        break;
    case VnSpfUnwritable::kNoText:
        diagnostic.found = "bytes that are no exchange text";
        diagnostic.expected = "printable ASCII, other characters and backslashes as vnEncodeText writes them";
        break;
    }
    return diagnostic;
}

/// Tells what could not be written as it is held, in the order of the file.
void report(const std::vector<std::vector<SpfWriteRemark>>& remarks, const VnIfcWriteOptions& options,
            VnIfcFileResult& result) {
    for (const std::vector<SpfWriteRemark>& block : remarks)
        for (const SpfWriteRemark& remark : block) {
            ++(isLoss(remark.why) ? result.errors : result.warnings);
            if (options.diagnostics)
                options.diagnostics(diagnosticOf(remark));
        }
}

/// Writes the model piece by piece, in order. `sink` returns false to stop. False when it or the host stopped.
template <class Sink>
bool writeModel(const VnIfcModel& model, const VnIfcWriteOptions& options, VnIfcFileResult& result, Sink sink) {
    const SlotRuns runs = model.data().runs(kBlock);
    if (!sink(headerText(model)))
        return false;
    const std::size_t blocks = runs.blocks();
    const unsigned threads = threadsFor(options.threads, blocks);
    std::vector<std::unique_ptr<SpfInstanceWriter>> writers;
    for (unsigned i = 0; i < threads; ++i)
        writers.push_back(std::make_unique<SpfInstanceWriter>(model.data(), options.encodeText));
    std::vector<std::vector<SpfWriteRemark>> remarks(blocks);
    // Each worker formats a block of its own and then waits for its turn, so that one formats while another writes.
    OrderedSink<Sink> ordered(sink);
    const bool done = shareWork(blocks, threads, options.progress, [&](unsigned worker, std::size_t block) {
        return ordered.write(block, [&] {
            SpfInstanceWriter& writer = *writers[worker];
            writer.clear();
            runs.forEach(block, [&](const VnIfcInstanceSlot& slot) { writer.write(&slot); });
            remarks[block] = std::exchange(writer.remarks(), {});
            return writer.text();
        });
    });
    report(remarks, options, result);
    return done && sink(kEnd);
}

} // namespace

VnIfcFileResult VnIfcModel::writeFile(const std::filesystem::path& path, const VnIfcWriteOptions& options) const {
    VnIfcFileResult result;
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        result.status = VN::eCannotWrite;
        result.message = "it is no regular file";
        return result;
    }
    VnSafeFile file(path);
    const auto sink = [&](std::string_view text) {
        result.bytes += text.size();
        return file.write(text);
    };
    const bool written = file.error() == 0 && writeModel(*this, options, result, sink);
    if (written && file.commit())
        return result;
    result.status = file.error() != 0 ? VN::eCannotWrite : VN::eCancelled;
    result.message = file.error() != 0 ? std::strerror(file.error()) : "cancelled";
    return result;
}

std::string VnIfcModel::writeText(const VnIfcWriteOptions& options, VnIfcFileResult* result) const {
    std::string text;
    VnIfcFileResult outcome;
    const bool written = writeModel(*this, options, outcome, [&](std::string_view piece) {
        text += piece;
        return true;
    });
    outcome.bytes = text.size();
    if (!written) {
        outcome.status = VN::eCancelled;
        outcome.message = "cancelled";
    }
    if (result)
        *result = std::move(outcome);
    return text;
}

} // namespace VN_SDAI
