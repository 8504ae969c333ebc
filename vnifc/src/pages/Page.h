#pragma once
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace vnifc::detail {

/// Data of a page: the id of its element, and what it holds.
using PageData = std::pair<std::string_view, std::string>;

/// A page with data in it, compressed and in base64, so that no text of a file is text of the page.
std::string pageWith(std::string_view page, std::initializer_list<PageData> data);

} // namespace vnifc::detail
