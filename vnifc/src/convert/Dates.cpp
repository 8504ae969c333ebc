#include "Computed.h"
#include "Conversion.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <optional>

// Dates and times: instances in one release, texts of ISO 8601 in the others.
namespace vnifc::conversion {

namespace {

constexpr int kSecondsOfMinute = 60;
constexpr int kSecondsOfHour = 3600;
constexpr int kSecondsOfDay = 86400;

struct Moment {
    std::optional<std::array<int, 3>> date; ///< year, month, day
    bool hasTime = false;
    int hour = 0;
    int minute = 0;
    double second = 0;
    std::string zone; ///< "Z", "+01:00"
};

int integerOf(const Value& value) noexcept {
    double number = 0;
    return value.toReal(number) && number > -1e9 && number < 1e9 ? static_cast<int>(number) : 0;
}

template <class... Arguments>
std::string formatted(const char* format, Arguments... arguments) {
    std::array<char, 96> buffer{};
    std::snprintf(buffer.data(), buffer.size(), format, arguments...);
    return buffer.data();
}

void readDate(const Record& record, Moment& moment) {
    moment.date = {integerOf(record["YearComponent"]), integerOf(record["MonthComponent"]),
                   integerOf(record["DayComponent"])};
}

void readTime(Conversion& conversion, const Record& record, Moment& moment) {
    moment.hasTime = true;
    moment.hour = integerOf(record["HourComponent"]);
    moment.minute = integerOf(record["MinuteComponent"]);
    record["SecondComponent"].toReal(moment.second);
    const Record zone = conversion.record(record["Zone"]);
    if (!zone.layout)
        return;
    const bool isBehind = zone["Sense"].text == "BEHIND";
    moment.zone =
        formatted("%c%02d:%02d", isBehind ? '-' : '+', integerOf(zone["HourOffset"]), integerOf(zone["MinuteOffset"]));
}

/// The moment that an instance stands for.
std::optional<Moment> momentOf(Conversion& conversion, const Value& reference) {
    const Record record = conversion.record(reference);
    Moment moment;
    if (record.has("YearComponent"))
        readDate(record, moment);
    else if (record.has("HourComponent"))
        readTime(conversion, record, moment);
    else if (record.has("DateComponent")) {
        const Record date = conversion.record(record["DateComponent"]);
        const Record time = conversion.record(record["TimeComponent"]);
        if (date.has("YearComponent"))
            readDate(date, moment);
        if (time.has("HourComponent"))
            readTime(conversion, time, moment);
    } else {
        return {};
    }
    return moment;
}

/// Reads "2024-05-06", "07:08:09.5+01:00", or both with a T between.
std::optional<Moment> momentOf(const Value& value) {
    const std::string text(value.content());
    Moment moment;
    int year = 0, month = 0, day = 0, length = 0;
    std::size_t time = 0;
    if (std::sscanf(text.c_str(), "%d-%d-%d%n", &year, &month, &day, &length) == 3) {
        moment.date = {year, month, day};
        time = static_cast<std::size_t>(length);
        if (time < text.size() && text[time] == 'T')
            ++time;
        else if (time < text.size())
            return {};
    }
    if (time == text.size())
        return moment.date ? std::optional(moment) : std::nullopt;
    length = 0;
    const int found = std::sscanf(text.c_str() + time, "%d:%d%n", &moment.hour, &moment.minute, &length);
    if (found != 2)
        return {};
    time += static_cast<std::size_t>(length);
    if (std::sscanf(text.c_str() + time, ":%lf%n", &moment.second, &length) == 1)
        time += static_cast<std::size_t>(length);
    moment.hasTime = true;
    moment.zone = text.substr(time);
    return moment;
}

std::string dateOf(const Moment& moment) {
    const auto& [year, month, day] = *moment.date;
    return formatted("%04d-%02d-%02d", year, month, day);
}

std::string timeOf(const Moment& moment) {
    std::string seconds = formatted("%02d", static_cast<int>(moment.second));
    const double fraction = moment.second - static_cast<int>(moment.second);
    if (fraction > 0) {
        std::array<char, 32> buffer{};
        const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), moment.second).ptr;
        seconds = (moment.second < 10 ? "0" : "") + std::string(buffer.data(), end);
    }
    return formatted("%02d:%02d:", moment.hour, moment.minute) + seconds + moment.zone;
}

constexpr std::string_view kNoTime = "the attribute takes a date without a time";

std::string calendarText(const Moment& moment) {
    const auto& [year, month, day] = *moment.date;
    return formatted("IFCCALENDARDATE(%d,%d,%d)", day, month, year);
}

std::string localTimeText(const Moment& moment) {
    std::string zone = "$";
    int hours = 0, minutes = 0;
    if (moment.zone == "Z")
        zone = "IFCCOORDINATEDUNIVERSALTIMEOFFSET(0,$,.AHEAD.)";
    else if (std::sscanf(moment.zone.c_str() + !moment.zone.empty(), "%d:%d", &hours, &minutes) == 2)
        zone = formatted("IFCCOORDINATEDUNIVERSALTIMEOFFSET(%d,%d,.%s.)", hours, minutes,
                         moment.zone[0] == '-' ? "BEHIND" : "AHEAD");
    std::string text = formatted("IFCLOCALTIME(%d,%d,", moment.hour, moment.minute);
    write(text, Value::real(moment.second));
    return text + ',' + zone + ",$)";
}

} // namespace

Value dateText(Conversion& conversion, const Record&, const Value& value) {
    const std::optional<Moment> moment = momentOf(conversion, value);
    if (!moment || !moment->date)
        return {};
    if (moment->hasTime)
        conversion.tellPartLost(Value::string(timeOf(*moment)), kNoTime);
    return Value::string(dateOf(*moment));
}

Value dateTimeText(Conversion& conversion, const Record&, const Value& value) {
    const std::optional<Moment> moment = momentOf(conversion, value);
    if (!moment || !moment->date)
        return {};
    return Value::string(dateOf(*moment) + 'T' + timeOf(*moment));
}

Value timeText(Conversion& conversion, const Record&, const Value& value) {
    const std::optional<Moment> moment = momentOf(conversion, value);
    return moment && moment->hasTime ? Value::string(timeOf(*moment)) : Value();
}

Value dateOfText(Conversion& conversion, const Record&, const Value& value) {
    const std::optional<Moment> moment = momentOf(value);
    if (!moment || !moment->date)
        return {};
    if (moment->hasTime)
        conversion.tellPartLost(Value::string(timeOf(*moment)), kNoTime);
    return Value::string(dateOf(*moment));
}

Value dateTimeOfText(Conversion&, const Record&, const Value& value) {
    const std::optional<Moment> moment = momentOf(value);
    return moment && moment->date ? Value::string(dateOf(*moment) + 'T' + timeOf(*moment)) : Value();
}

Value calendarDate(Conversion& conversion, const Record&, const Value& value) {
    const std::optional<Moment> moment = momentOf(value);
    if (!moment || !moment->date)
        return {};
    if (moment->hasTime)
        conversion.tellPartLost(Value::string(timeOf(*moment)), kNoTime);
    return conversion.make(calendarText(*moment));
}

Value dateAndTime(Conversion& conversion, const Record&, const Value& value) {
    const std::optional<Moment> moment = momentOf(value);
    if (!moment || !moment->date)
        return {};
    return conversion.make("IFCDATEANDTIME(" + calendarText(*moment) + ',' + localTimeText(*moment) + ')');
}

Value localTime(Conversion& conversion, const Record&, const Value& value) {
    const std::optional<Moment> moment = momentOf(value);
    return moment && moment->hasTime ? conversion.make(localTimeText(*moment)) : Value();
}

// ---- durations

Value durationText(Conversion& conversion, const Record&, const Value& value) {
    const Value& plain = value.is(Value::Kind::kTyped) && value.items.size() == 1 ? value.items.front() : value;
    double number = 0;
    if (!plain.toReal(number))
        return {};
    const double seconds = number * conversion.unitFactor("TIMEUNIT");
    constexpr double kLongest = 1e15;
    if (!(seconds > -kLongest && seconds < kLongest))
        return {};
    double rest = seconds < 0 ? -seconds : seconds;
    std::string text = seconds < 0 ? "-P" : "P";
    const auto take = [&](int unit, char letter) {
        const auto count = static_cast<std::int64_t>(rest / unit);
        rest -= static_cast<double>(count) * unit;
        if (count > 0)
            text += std::to_string(count) + letter;
    };
    take(kSecondsOfDay, 'D');
    const std::size_t days = text.size();
    text += 'T';
    take(kSecondsOfHour, 'H');
    take(kSecondsOfMinute, 'M');
    if (rest > 0 || text.size() == days + 1) {
        std::array<char, 32> buffer{};
        const auto end =
            std::to_chars(buffer.data(), buffer.data() + buffer.size(), rest, std::chars_format::fixed).ptr;
        text += std::string(buffer.data(), end) + 'S';
    }
    // A whole number of days needs no time.
    if (text.ends_with("T0S") && days > (seconds < 0 ? 2U : 1U))
        text.resize(days);
    return Value::string(text);
}

Value durationNumber(Conversion& conversion, const Record&, const Value& value) {
    const Value& plain = value.is(Value::Kind::kTyped) && value.items.size() == 1 ? value.items.front() : value;
    std::string_view text = plain.content();
    const double sign = text.starts_with('-') ? -1 : 1;
    text.remove_prefix(text.starts_with('-'));
    if (!text.starts_with('P'))
        return {};
    text.remove_prefix(1);
    double seconds = 0;
    bool isTime = false;
    while (!text.empty()) {
        if (text.front() == 'T') {
            isTime = true;
            text.remove_prefix(1);
            continue;
        }
        double count = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
        if (error != std::errc() || end == text.data() + text.size())
            return {};
        const char letter = *end;
        text.remove_prefix(static_cast<std::size_t>(end - text.data()) + 1);
        constexpr int kDaysOfWeek = 7;
        const int unit = letter == 'W'             ? kDaysOfWeek * kSecondsOfDay
                         : letter == 'D'           ? kSecondsOfDay
                         : letter == 'H'           ? kSecondsOfHour
                         : letter == 'M' && isTime ? kSecondsOfMinute
                         : letter == 'S'           ? 1
                                                   : 0;
        if (unit == 0)
            return {}; // years and months have no length of their own
        seconds += count * unit;
    }
    return Value::real(sign * seconds / conversion.unitFactor("TIMEUNIT"));
}

Value lagTime(Conversion& conversion, const Record& record, const Value& value) {
    const Value duration = durationText(conversion, record, value);
    if (!duration.isSet())
        return {};
    return conversion.make("IFCLAGTIME($,$,$,IFCDURATION(" + duration.text + "),.NOTDEFINED.)");
}

Value lagNumber(Conversion& conversion, const Record& record, const Value& value) {
    const Record lag = conversion.record(value);
    return lag.has("LagValue") && lag["LagValue"].text == "IFCDURATION"
               ? durationNumber(conversion, record, lag["LagValue"])
               : Value();
}

} // namespace vnifc::conversion
