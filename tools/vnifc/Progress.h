#pragma once
#include <VnIfcCore/VnIfcModel.h>

#include <chrono>
#include <string>

namespace vnifc::tool {

/// A line on standard error that says how far an operation has come: only on a terminal, and only when the operation
/// lasts longer than half a second. It vanishes when it is cleared.
class Progress {
public:
    /// `activity` stands before the percentage: "reading house.ifc".
    explicit Progress(const std::string& activity);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// For the operation's options; must not outlive this object. Empty where nobody would see the line.
    VN_SDAI::VnIfcProgress callback();
    void clear() noexcept;

private:
    void show(double done);

    std::string m_activity;
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    int m_percentage = -1; ///< that is shown; -1 for none
};

} // namespace vnifc::tool
