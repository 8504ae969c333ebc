#include "pages/Page.h"

#include <vnifc/Report.h>

#include <cstdint>
#include <stdexcept>

#ifdef VNIFC_WITH_ZLIB
#include <zlib.h>
#endif

namespace vnifc {

namespace {

constexpr std::string_view kDataMark = "@DATA@";

std::string base64(std::string_view bytes) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr std::size_t kGroup = 3; // bytes for four digits
    std::string text;
    text.reserve((bytes.size() + kGroup - 1) / kGroup * 4);
    for (std::size_t i = 0; i < bytes.size(); i += kGroup) {
        const std::size_t count = std::min(kGroup, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < kGroup; ++k)
            group = group << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        for (std::size_t digit = 0; digit < 4; ++digit)
            text += digit <= count ? kDigits[group >> (18 - 6 * digit) & 63] : '=';
    }
    return text;
}

#ifdef VNIFC_WITH_ZLIB
constexpr std::string_view kForm = "deflate";

std::string packed(const std::string& text) {
    z_stream stream{};
    constexpr int kLevel = 6;
    if (deflateInit(&stream, kLevel) != Z_OK)
        throw std::bad_alloc();
    std::string result;
    std::string buffer(std::size_t{1} << 16, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    std::size_t left = text.size();
    int state = Z_OK;
    while (state == Z_OK) {
        // The counts of zlib have 32 bits.
        constexpr std::size_t kPiece = std::size_t{1} << 30;
        if (stream.avail_in == 0) {
            stream.avail_in = static_cast<uInt>(std::min(left, kPiece));
            left -= stream.avail_in;
        }
        stream.next_out = reinterpret_cast<Bytef*>(buffer.data());
        stream.avail_out = static_cast<uInt>(buffer.size());
        state = deflate(&stream, left == 0 ? Z_FINISH : Z_NO_FLUSH);
        result.append(buffer, 0, buffer.size() - stream.avail_out);
    }
    deflateEnd(&stream);
    if (state != Z_STREAM_END)
        throw std::runtime_error("zlib cannot compress the page");
    return result;
}
#else
constexpr std::string_view kForm = "plain";

const std::string& packed(const std::string& text) { return text; }
#endif

} // namespace

bool hasZlib() noexcept { return kForm == "deflate"; }

std::string detail::pageWith(std::string_view page, std::initializer_list<PageData> data) {
    const std::size_t mark = page.find(kDataMark);
    std::string result(page.substr(0, mark));
    for (const auto& [id, text] : data) {
        result.append("<script type=\"application/octet-stream\" id=\"").append(id);
        result.append("\" data-form=\"").append(kForm).append("\">");
        result += base64(packed(text));
        result += "</script>\n";
    }
    return result.append(page.substr(mark + kDataMark.size()));
}

} // namespace vnifc
