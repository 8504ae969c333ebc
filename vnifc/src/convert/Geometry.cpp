#include "Computed.h"
#include "Conversion.h"

#include <algorithm>

// Shapes that a release says in other entities.
namespace vnifc::conversion {

namespace {

constexpr std::string_view kNoFace = "the face has fewer than three points";

/// The points of a list of coordinates, each made when it is first asked for.
class Points {
public:
    Points(Conversion& conversion, const Value& list) : m_conversion(conversion), m_record(conversion.record(list)) {
        m_made.resize(coordinates().size());
    }

    std::size_t count() const noexcept { return m_made.size(); }
    /// "#12" for an index from 1; empty for one that is none.
    std::string at(const Value& index) {
        double number = 0;
        if (!index.toReal(number) || number < 1 || number > static_cast<double>(m_made.size()))
            return {};
        std::string& made = m_made[static_cast<std::size_t>(number) - 1];
        if (made.empty())
            made = textOf(m_conversion.make("IFCCARTESIANPOINT(" +
                                            textOf(coordinates()[static_cast<std::size_t>(number) - 1]) + ')'));
        return made;
    }

private:
    const Values& coordinates() const noexcept { return m_record["CoordList"].items; }

    Conversion& m_conversion;
    Record m_record;
    std::vector<std::string> m_made;
};

/// Reads the indices of a face set by way of its own list of indices, if it has one.
Value pointIndex(const Value& own, const Value& index) {
    double number = 0;
    if (!own.is(Value::Kind::kList))
        return index;
    if (!index.toReal(number) || number < 1 || number > static_cast<double>(own.items.size()))
        return {};
    return own.items[static_cast<std::size_t>(number) - 1];
}

/// A loop through the points, each once; empty when fewer than three are left.
std::string boundOf(Points& points, const Value& own, const Value& indices, bool isOuter) {
    constexpr std::size_t kLeast = 3;
    std::vector<std::string> corners;
    for (const Value& index : indices.items) {
        const std::string point = points.at(pointIndex(own, index));
        if (!point.empty() && std::ranges::find(corners, point) == corners.end())
            corners.push_back(point);
    }
    if (corners.size() < kLeast)
        return {};
    std::string loop;
    for (const std::string& point : corners)
        loop += (loop.empty() ? "" : ",") + point;
    return std::string(isOuter ? "IFCFACEOUTERBOUND" : "IFCFACEBOUND") + "(IFCPOLYLOOP((" + loop + ")),.T.)";
}

Value faceSet(Conversion& conversion, const Values& faces) {
    return faces.empty() ? Value() : conversion.make("IFCCONNECTEDFACESET(" + textOf(Value::list(faces)) + ')');
}

} // namespace

Value locationOfPlacement(Conversion& conversion, const Record&, const Value& value) {
    return conversion.record(value)["Location"];
}

namespace {

/// Curves that a Bezier curve consists of; 0 when its points do not come out even.
std::size_t bezierPieces(const Record& record, std::size_t& degree) {
    double number = 0;
    const std::size_t points = record["ControlPointsList"].items.size();
    if (!record["Degree"].toReal(number) || number < 1 || number >= static_cast<double>(points))
        return 0;
    degree = static_cast<std::size_t>(number);
    return (points - 1) % degree == 0 ? (points - 1) / degree : 0;
}

} // namespace

Value bezierMultiplicities(Conversion&, const Record& record, const Value&) {
    std::size_t degree = 0;
    const std::size_t pieces = bezierPieces(record, degree);
    Values found;
    for (std::size_t i = 0; pieces > 0 && i <= pieces; ++i)
        found.push_back(Value::integer(static_cast<std::int64_t>(degree + (i == 0 || i == pieces))));
    return found.empty() ? Value() : Value::list(std::move(found));
}

Value bezierKnots(Conversion&, const Record& record, const Value&) {
    std::size_t degree = 0;
    const std::size_t pieces = bezierPieces(record, degree);
    Values found;
    for (std::size_t i = 0; pieces > 0 && i <= pieces; ++i)
        found.push_back(Value::real(static_cast<double>(i)));
    return found.empty() ? Value() : Value::list(std::move(found));
}

Value facesOfTriangles(Conversion& conversion, const Record& record, const Value& value) {
    Points points(conversion, value);
    Values faces;
    for (const Value& each : record["CoordIndex"].items) {
        const std::string bound = boundOf(points, record["PnIndex"], each, true);
        if (bound.empty())
            conversion.tellPartLost(each, kNoFace);
        else
            faces.push_back(conversion.make("IFCFACE((" + bound + "))"));
    }
    return faceSet(conversion, faces);
}

Value facesOfPolygons(Conversion& conversion, const Record& record, const Value& value) {
    Points points(conversion, value);
    Values faces;
    for (const Value& each : record["Faces"].items) {
        const Record face = conversion.record(each);
        std::string bounds = boundOf(points, record["PnIndex"], face["CoordIndex"], true);
        if (bounds.empty()) {
            conversion.tellPartLost(each, kNoFace);
            continue;
        }
        for (const Value& inner : face["InnerCoordIndices"].items) {
            const std::string bound = boundOf(points, record["PnIndex"], inner, false);
            bounds += bound.empty() ? "" : ',' + bound;
        }
        faces.push_back(conversion.make("IFCFACE((" + bounds + "))"));
    }
    return faceSet(conversion, faces);
}

Value pointsOfIndexedCurve(Conversion& conversion, const Record& record, const Value& value) {
    Points points(conversion, value);
    Values indices;
    for (std::size_t i = 1; !record["Segments"].isSet() && i <= points.count(); ++i)
        indices.push_back(Value::integer(static_cast<std::int64_t>(i)));
    for (const Value& segment : record["Segments"].items) {
        if (segment.items.size() != 1)
            return {};
        if (segment.text == "IFCARCINDEX")
            conversion.tellPartLost(segment, "arcs by index came later; lines go through their three points");
        for (const Value& index : segment.items.front().items)
            if (indices.empty() || indices.back().text != index.text)
                indices.push_back(index);
    }
    Values found;
    for (const Value& index : indices) {
        Values point;
        if (!parseList(points.at(index), point) || point.empty())
            return {};
        found.push_back(point.front());
    }
    constexpr std::size_t kLeast = 2;
    return found.size() < kLeast ? Value() : Value::list(std::move(found));
}

/// The parameter at the end of a directrix, for curves whose parameters count their pieces.
Value endParameter(Conversion& conversion, const Record& record, const Value&) {
    const Record curve = conversion.record(record["Directrix"]);
    std::size_t pieces = curve["Segments"].items.size();
    if (curve.has("Points") && !curve.has("Segments"))
        pieces = curve["Points"].items.size() - !curve["Points"].items.empty();
    return pieces == 0 ? Value() : Value::real(static_cast<double>(pieces));
}

} // namespace vnifc::conversion
