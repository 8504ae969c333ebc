#include "Progress.h"

#include "Messages.h"
#include "Platform.h"

#include <fmt/format.h>

#include <cstdio>

namespace vnifc::tool {

namespace {

constexpr std::chrono::milliseconds kPatience{500};

} // namespace

Progress::Progress(const std::string& activity) : m_activity(printable(activity)) {}

VN_SDAI::VnIfcProgress Progress::callback() {
    if (!isTerminal())
        return {};
    return [this](double done) {
        show(done);
        return true;
    };
}

void Progress::show(double done) {
    const int percentage = static_cast<int>(done * 100);
    if (percentage == m_percentage || std::chrono::steady_clock::now() - m_start < kPatience)
        return;
    m_percentage = percentage;
    std::fputs(fmt::format("\r{}: {} %\x1b[K", m_activity, percentage).c_str(), stderr);
}

void Progress::clear() noexcept {
    if (m_percentage < 0)
        return;
    m_percentage = -1;
    std::fputs("\r\x1b[K", stderr);
}

} // namespace vnifc::tool
