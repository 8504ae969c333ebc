#include "SpfInstanceWriter.h"
#include "WorkSharing.h"

#include <VnIfcCore/VnIfcSchema.h>

#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <utility>

#if defined(_WIN32)
#include <io.h>
#include <process.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace VN_SDAI {

namespace {

constexpr std::size_t kBlock = 16384;

std::string headerText(const VnIfcModel& model) {
    std::string text = "ISO-10303-21;\nHEADER;\n";
    const bool isEmpty = model.header().entries().empty();
    const VnIfcHeader standard =
        isEmpty ? VnIfcHeader::standard(model.schema()->name().view(), "", "1970-01-01T00:00:00") : VnIfcHeader();
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

/// Writes the model piece by piece, in order. `sink` answers false to stop. False when it or the host stopped.
template <class Sink>
bool writeModel(const VnIfcModel& model, const VnIfcWriteOptions& options, Sink sink) {
    std::vector<const VnIfcInstanceSlot*> slots;
    slots.reserve(model.count());
    for (const VnIfcInstanceSlot* slot : model.data().ordered())
        if (slot->object() && !slot->has(VnIfcInstanceSlot::kErased))
            slots.push_back(slot);
    if (!sink(headerText(model)))
        return false;
    const std::size_t blocks = (slots.size() + kBlock - 1) / kBlock;
    const unsigned threads = threadsFor(options.threads, blocks);
    std::vector<std::unique_ptr<SpfInstanceWriter>> writers;
    for (unsigned i = 0; i < threads; ++i)
        writers.push_back(std::make_unique<SpfInstanceWriter>(model.data()));
    // Each worker formats a block of its own and then waits for its turn, so that one formats while another writes.
    OrderedSink<Sink> ordered(sink);
    const bool done = shareWork(blocks, threads, options.progress, [&](unsigned worker, std::size_t block) {
        return ordered.write(block, [&] {
            SpfInstanceWriter& writer = *writers[worker];
            writer.clear();
            const std::size_t last = std::min(slots.size(), (block + 1) * kBlock);
            for (std::size_t i = block * kBlock; i < last; ++i)
                writer.write(slots[i]);
            return writer.text();
        });
    });
    return done && sink(kEnd);
}

/// A file that takes its name only when it is complete.
class PendingFile {
public:
    explicit PendingFile(const std::filesystem::path& target) : m_target(target) {
        std::error_code error;
        // A link stays a link, and the file behind it is replaced.
        if (std::filesystem::is_symlink(target, error))
            m_target = std::filesystem::canonical(target, error);
        if (error)
            m_target = target;
        m_path = m_target;
        m_path += ".part" + std::to_string(::getpid());
        m_file = std::fopen(m_path.string().c_str(), "wb");
        m_error = m_file ? 0 : errno;
        if (m_file)
            std::setvbuf(m_file, nullptr, _IONBF, 0); // pieces are large
    }
    ~PendingFile() {
        if (!m_file)
            return;
        std::fclose(m_file);
        std::remove(m_path.string().c_str());
    }
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    bool write(std::string_view text) {
        if (!m_file)
            return false;
        if (std::fwrite(text.data(), 1, text.size(), m_file) != text.size()) {
            m_error = errno;
            return false;
        }
#if defined(__linux__)
        // Begins to bring it to the disk while the rest is being made, so that little is left to wait for at the end.
        ::sync_file_range(::fileno(m_file), static_cast<off_t>(m_written), static_cast<off_t>(text.size()),
                          SYNC_FILE_RANGE_WRITE);
#endif
        m_written += text.size();
        return true;
    }
    bool commit() {
        std::FILE* file = std::exchange(m_file, nullptr);
        bool good = std::fflush(file) == 0;
#if !defined(_WIN32)
        good = good && ::fsync(::fileno(file)) == 0;
#endif
        if (!good)
            m_error = errno;
        if (std::fclose(file) != 0 && good) {
            good = false;
            m_error = errno;
        }
        std::error_code error;
        if (good) {
            const auto permissions = std::filesystem::status(m_target, error).permissions();
            if (!error && std::filesystem::exists(m_target))
                std::filesystem::permissions(m_path, permissions, error);
            std::filesystem::rename(m_path, m_target, error);
            if (!error)
                return true;
            m_error = error.value();
        }
        std::remove(m_path.string().c_str());
        return false;
    }
    int error() const noexcept { return m_error; }

private:
    std::filesystem::path m_target;
    std::filesystem::path m_path;
    std::FILE* m_file = nullptr;
    std::uint64_t m_written = 0;
    int m_error = 0;
};

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
    PendingFile file(path);
    const auto sink = [&](std::string_view text) {
        result.bytes += text.size();
        return file.write(text);
    };
    const bool written = file.error() == 0 && writeModel(*this, options, sink);
    if (written && file.commit())
        return result;
    result.status = file.error() != 0 ? VN::eCannotWrite : VN::eCancelled;
    result.message = file.error() != 0 ? std::strerror(file.error()) : "cancelled";
    return result;
}

std::string VnIfcModel::writeText(const VnIfcWriteOptions& options) const {
    std::string text;
    writeModel(*this, options, [&](std::string_view piece) {
        text += piece;
        return true;
    });
    return text;
}

} // namespace VN_SDAI
