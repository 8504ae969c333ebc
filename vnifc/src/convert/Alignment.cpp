#include "Computed.h"
#include "Conversion.h"

#include <array>
#include <cmath>

// Alignments: curves made of segments in the early text of IFC4X3, nested elements with design parameters and curves of
// general segments in the final one; and what is placed along them.
namespace vnifc::conversion {

namespace {

std::string textOf(double value) { return textOf(Value::real(value)); }

double realOf(const Value& value) noexcept {
    double number = 0;
    const bool isTyped = value.is(Value::Kind::kTyped) && value.items.size() == 1;
    (isTyped ? value.items.front() : value).toReal(number);
    return number;
}

bool isTrue(const Value& value) noexcept { return value.is(Value::Kind::kLiteral) && value.text == "T"; }

using Vector = std::array<double, 3>;

bool directionOf(Conversion& conversion, const Value& reference, Vector& direction) {
    const Record record = conversion.record(reference);
    const Values& ratios = record["DirectionRatios"].items;
    for (std::size_t i = 0; i < direction.size(); ++i)
        direction[i] = i < ratios.size() ? realOf(ratios[i]) : 0;
    return !ratios.empty();
}

std::string crossed(const Vector& a, const Vector& b) {
    return "IFCDIRECTION((" + textOf(a[1] * b[2] - a[2] * b[1]) + ',' + textOf(a[2] * b[0] - a[0] * b[2]) + ',' +
           textOf(a[0] * b[1] - a[1] * b[0]) + "))";
}

bool isCurveInTarget(Conversion& conversion, const Value& curve) {
    const EntityType* type = curve.is(Value::Kind::kReference) ? conversion.typeInTarget(curve.number) : nullptr;
    return type && isNamed(*type, "IfcCurve");
}

/// The text of a point on a curve; empty when the curve is lost.
std::string pointText(Conversion& conversion, const Record& distance, const Value& curve) {
    if (!distance.has("DistanceAlong") || !isCurveInTarget(conversion, curve))
        return {};
    if (distance["AlongHorizontal"].text == "F")
        conversion.tellPartLost(distance["AlongHorizontal"], "distances along the curve in space came later");
    return "IFCPOINTBYDISTANCEEXPRESSION(IFCLENGTHMEASURE(" + textOf(distance["DistanceAlong"]) + ")," +
           textOf(distance["OffsetLateral"]) + ',' + textOf(distance["OffsetVertical"]) + ',' +
           textOf(distance["OffsetLongitudinal"]) + ',' + textOf(curve) + ')';
}

const Value& curveOf(const Record& owner) { return owner.has("Directrix") ? owner["Directrix"] : owner["BasisCurve"]; }

/// The point of an axis placement, or the point itself.
Record pointOf(Conversion& conversion, const Value& value) {
    const Record record = conversion.record(value);
    return record.has("Location") ? conversion.record(record["Location"]) : record;
}

} // namespace

// ---- placements

Value axisPlacement(Conversion& conversion, const Record& record, const Value& value) {
    const std::string point = pointText(conversion, conversion.record(record["Distance"]), value);
    if (point.empty())
        return {};
    const Record orientation = conversion.record(record["Orientation"]);
    Vector lateral{}, vertical{};
    const bool hasVertical = directionOf(conversion, orientation["VerticalAxisDirection"], vertical);
    const bool hasBoth = hasVertical && directionOf(conversion, orientation["LateralAxisDirection"], lateral);
    return conversion.make("IFCAXIS2PLACEMENTLINEAR(" + point + ',' +
                           (hasVertical ? textOf(orientation["VerticalAxisDirection"]) : "$") + ',' +
                           (hasBoth ? crossed(lateral, vertical) : "$") + ')');
}

Value positionInSpace(Conversion& conversion, const Record&, const Value& value) {
    const bool isGiven = value.is(Value::Kind::kReference) && conversion.typeInTarget(value.number);
    for (const std::string_view name : {"RelativePlacement", "PlacementMeasuredAlong", "Distance", "Orientation"})
        conversion.tellLost(name, isGiven
                                      ? "placement along curves came later; the position in space is kept"
                                      : "placement along curves came later, and the file gives no position in space");
    if (isGiven)
        return value;
    return conversion.make("IFCAXIS2PLACEMENT3D(IFCCARTESIANPOINT((0.,0.,0.)),$,$)");
}

Value distanceOfPoint(Conversion& conversion, const Record&, const Value& value) {
    const Record point = pointOf(conversion, value);
    const Value& along = point["DistanceAlong"];
    if (along.text != "IFCLENGTHMEASURE" || along.items.size() != 1)
        return {};
    return conversion.make("IFCDISTANCEEXPRESSION(" + textOf(along.items.front()) + ',' +
                           textOf(point["OffsetLateral"]) + ',' + textOf(point["OffsetVertical"]) + ',' +
                           textOf(point["OffsetLongitudinal"]) + ",.T.)");
}

Value distanceOfPlacement(Conversion& conversion, const Record& record, const Value& value) {
    return distanceOfPoint(conversion, record, value);
}

Value curveOfPlacement(Conversion& conversion, const Record&, const Value& value) {
    const Value curve = pointOf(conversion, value)["BasisCurve"];
    return isCurveInTarget(conversion, curve) ? curve : Value();
}

Value orientationOfPlacement(Conversion& conversion, const Record&, const Value& value) {
    const Record placement = conversion.record(value);
    Vector axis{}, reference{};
    if (!directionOf(conversion, placement["Axis"], axis) ||
        !directionOf(conversion, placement["RefDirection"], reference))
        return {};
    return conversion.make("IFCORIENTATIONEXPRESSION(" + crossed(axis, reference) + ',' + textOf(placement["Axis"]) +
                           ')');
}

Value pointOnCurve(Conversion& conversion, const Record& record, const Value& value) {
    const std::string point = pointText(conversion, conversion.record(value), curveOf(record));
    return point.empty() ? Value() : conversion.make(point);
}

Value placementOnCurve(Conversion& conversion, const Record& record, const Value& value) {
    const std::string point = pointText(conversion, conversion.record(value), curveOf(record));
    return point.empty() ? Value() : conversion.make("IFCAXIS2PLACEMENTLINEAR(" + point + ",$,$)");
}

// ---- segments

namespace {

/// A segment of the horizontal alignment: curvature is positive to the left.
struct Horizontal {
    Value point;
    double direction = 0; ///< in the unit of the file
    double length = 0;
    double startCurvature = 0;
    double endCurvature = 0;
    std::string_view type = "LINE";

    static double curvatureOf(const Value& radius, const Value& isLeft) noexcept {
        const double number = realOf(radius);
        return number == 0 ? 0 : (isTrue(isLeft) ? 1 : -1) / number;
    }

    static std::string_view transitionType(std::string_view word) noexcept {
        constexpr std::pair<std::string_view, std::string_view> kTypes[] = {
            {"BIQUADRATICPARABOLA", "HELMERTCURVE"}, {"BLOSSCURVE", "BLOSSCURVE"}, {"CLOTHOIDCURVE", "CLOTHOID"},
            {"COSINECURVE", "COSINECURVE"},          {"CUBICPARABOLA", "CUBIC"},   {"SINECURVE", "SINECURVE"}};
        for (const auto& [old, type] : kTypes)
            if (old == word)
                return type;
        return "CLOTHOID";
    }

    explicit Horizontal(const Record& curve)
        : point(curve["StartPoint"]), direction(realOf(curve["StartDirection"])),
          length(realOf(curve["SegmentLength"])) {
        if (curve.has("IsCCW")) {
            startCurvature = endCurvature = curvatureOf(curve["Radius"], curve["IsCCW"]);
            type = "CIRCULARARC";
        } else if (curve.has("TransitionCurveType")) {
            startCurvature = curvatureOf(curve["StartRadius"], curve["IsStartRadiusCCW"]);
            endCurvature = curvatureOf(curve["EndRadius"], curve["IsEndRadiusCCW"]);
            type = transitionType(curve["TransitionCurveType"].text);
        }
    }

    static std::string radius(double curvature) { return textOf(curvature == 0 ? 0.0 : 1 / curvature); }

    std::string parameters(const Record& segment) const {
        return "IFCALIGNMENTHORIZONTALSEGMENT(" + textOf(segment["StartTag"]) + ',' + textOf(segment["EndTag"]) + ',' +
               textOf(point) + ',' + textOf(direction) + ',' + radius(startCurvature) + ',' + radius(endCurvature) +
               ',' + textOf(length) + ",$,." + std::string(type) + ".)";
    }

    /// Start and length on the parent curve, and that curve.
    std::string geometry() const {
        constexpr std::string_view kOrigin = "IFCAXIS2PLACEMENT2D(IFCCARTESIANPOINT((0.,0.)),$)";
        const auto along = [](double start, double distance) {
            return "IFCLENGTHMEASURE(" + textOf(start) + "),IFCLENGTHMEASURE(" + textOf(distance) + "),";
        };
        const double change = endCurvature - startCurvature;
        if (change == 0 && startCurvature == 0)
            return along(0, length) + "IFCLINE(IFCCARTESIANPOINT((0.,0.)),IFCVECTOR(IFCDIRECTION((1.,0.)),1.))";
        if (change == 0)
            return along(0, startCurvature > 0 ? length : -length) + "IFCCIRCLE(" + std::string(kOrigin) + ',' +
                   textOf(std::abs(1 / startCurvature)) + ')';
        // On a clothoid the curvature at the length s is s / A^2.
        const double constant = std::copysign(std::sqrt(length / std::abs(change)), change);
        return along(startCurvature * length / change, length) + "IFCCLOTHOID(" + std::string(kOrigin) + ',' +
               textOf(constant) + ')';
    }
};

/// A segment of the vertical alignment, over its length in plan.
struct Vertical {
    double start = 0;
    double length = 0;
    double height = 0;
    double gradient = 0;
    double endGradient = 0;
    double radius = 0; ///< positive in sags; 0 for lines
    std::string_view type = "CONSTANTGRADIENT";

    explicit Vertical(const Record& segment)
        : start(realOf(segment["StartDistAlong"])), length(realOf(segment["HorizontalLength"])),
          height(realOf(segment["StartHeight"])), gradient(realOf(segment["StartGradient"])), endGradient(gradient) {
        const double sign = isTrue(segment["IsConvex"]) ? -1 : 1; // convex is a crest
        if (segment.has("ParabolaConstant")) {
            radius = sign * realOf(segment["ParabolaConstant"]);
            type = "PARABOLICARC";
            endGradient = radius == 0 ? gradient : gradient + length / radius;
        } else if (segment.has("Radius")) {
            radius = sign * realOf(segment["Radius"]);
            type = "CIRCULARARC";
            // The sine of the slope grows evenly along the plan of a circle.
            const double sine = radius == 0 ? 2 : std::sin(std::atan(gradient)) + length / radius;
            endGradient = std::abs(sine) < 1 ? std::tan(std::asin(sine)) : gradient;
        }
    }

    std::string parameters(const Record& segment) const {
        return "IFCALIGNMENTVERTICALSEGMENT(" + textOf(segment["StartTag"]) + ',' + textOf(segment["EndTag"]) + ',' +
               textOf(start) + ',' + textOf(length) + ',' + textOf(height) + ',' + textOf(gradient) + ',' +
               textOf(endGradient) + ',' + (radius == 0 ? "$" : textOf(radius)) + ",." + std::string(type) + ".)";
    }

    std::string geometry() const {
        const auto along = [](double distance) {
            return "IFCLENGTHMEASURE(0.),IFCLENGTHMEASURE(" + textOf(distance) + "),";
        };
        if (radius == 0)
            return along(length * std::hypot(1, gradient)) +
                   "IFCLINE(IFCCARTESIANPOINT((0.,0.)),IFCVECTOR(IFCDIRECTION((1.,0.)),1.))";
        if (type == "CIRCULARARC") {
            const double turn = std::atan(endGradient) - std::atan(gradient);
            return along(radius * turn * (radius > 0 ? 1 : -1)) +
                   "IFCCIRCLE(IFCAXIS2PLACEMENT2D(IFCCARTESIANPOINT((0.,0.)),$)," + textOf(std::abs(radius)) + ')';
        }
        const auto arc = [](double slope) { return (slope * std::hypot(1, slope) + std::asinh(slope)) / 2; };
        return along(std::abs(radius * (arc(endGradient) - arc(gradient)))) +
               "IFCPOLYNOMIALCURVE(IFCAXIS2PLACEMENT2D(IFCCARTESIANPOINT((0.,0.)),$),(0.,1.),(0.," + textOf(gradient) +
               ',' + textOf(1 / (2 * radius)) + "),$)";
    }
};

std::string_view transition(const Record& segment, bool isLast) noexcept {
    if (isLast)
        return ".DISCONTINUOUS.";
    return isTrue(segment["TangentialContinuity"]) ? ".CONTSAMEGRADIENT." : ".CONTINUOUS.";
}

std::string segmentText(const Record& segment, bool isLast, const std::string& point, double angle,
                        const std::string& geometry) {
    return "IFCCURVESEGMENT(" + std::string(transition(segment, isLast)) + ",IFCAXIS2PLACEMENT2D(" + point +
           ",IFCDIRECTION((" + textOf(std::cos(angle)) + ',' + textOf(std::sin(angle)) + ")))," + geometry + ')';
}

/// An alignment's part with its segments nested in it; "#12".
std::string part(Conversion& conversion, std::string_view keyword, std::string_view name,
                 const std::vector<std::string>& parameters) {
    const std::string head = "(@guid,@owner,";
    const Value made = conversion.make(std::string(keyword) + head + '\'' + std::string(name) + "',$,$,$,$)");
    std::string segments;
    for (const std::string& each : parameters)
        segments += (segments.empty() ? "" : ",") +
                    textOf(conversion.make("IFCALIGNMENTSEGMENT" + head + "$,$,$,$,$," + each + ')'));
    conversion.make("IFCRELNESTS" + head + "$,$," + textOf(made) + ",(" + segments + "))");
    return textOf(made);
}

/// Nests what the curve of an alignment says in the alignment itself.
void nestDesign(Conversion& conversion, const Record& alignment, const Record& curve) {
    std::vector<std::string> horizontals, verticals;
    const Record horizontal = conversion.record(curve["Horizontal"]);
    for (const Value& each : horizontal["Segments"].items) {
        const Record segment = conversion.record(each);
        horizontals.push_back(Horizontal(conversion.record(segment["CurveGeometry"])).parameters(segment));
    }
    const Record vertical = conversion.record(curve["Vertical"]);
    for (const Value& each : vertical["Segments"].items) {
        const Record segment = conversion.record(each);
        verticals.push_back(Vertical(segment).parameters(segment));
    }
    std::string parts;
    if (!horizontals.empty())
        parts = part(conversion, "IFCALIGNMENTHORIZONTAL", "Horizontal", horizontals);
    if (!verticals.empty())
        parts += (parts.empty() ? "" : ",") + part(conversion, "IFCALIGNMENTVERTICAL", "Vertical", verticals);
    if (!parts.empty())
        conversion.make("IFCRELNESTS(@guid,@owner,$,$,#" + std::to_string(alignment.number) + ",(" + parts + "))");
}

/// True when a shape holds the item.
bool holds(Conversion& conversion, const Value& shape, std::uint64_t item) {
    bool found = false;
    const Record definition = conversion.record(shape);
    for (const Value& each : definition["Representations"].items) {
        const Record representation = conversion.record(each);
        forEachReference(representation["Items"], [&](std::uint64_t number) { found = found || number == item; });
    }
    return found;
}

} // namespace

// ---- alignments

Value alignmentShape(Conversion& conversion, const Record& record, const Value& value) {
    const Record curve = conversion.record(value);
    if (curve.has("Horizontal") && conversion.target().concrete("IfcAlignmentHorizontal"))
        nestDesign(conversion, record, curve);
    const Value& shape = record["Representation"];
    if (shape.isSet()) {
        if (!holds(conversion, shape, value.number))
            conversion.tellPartLost(value, "the alignment has a shape already");
        return shape;
    }
    if (!isCurveInTarget(conversion, value))
        return {};
    for (const std::uint64_t context : conversion.instancesOf("IfcGeometricRepresentationContext"))
        return conversion.make("IFCPRODUCTDEFINITIONSHAPE($,$,(IFCSHAPEREPRESENTATION(#" + std::to_string(context) +
                               ",'Axis','Curve3D',(" + textOf(value) + "))))");
    return {};
}

Value horizontalCurve(Conversion& conversion, const Record&, const Value& value) {
    const double radians = conversion.unitFactor("PLANEANGLEUNIT");
    std::string segments;
    const Record horizontal = conversion.record(value);
    const Values& items = horizontal["Segments"].items;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const Record segment = conversion.record(items[i]);
        const Horizontal each(conversion.record(segment["CurveGeometry"]));
        if (each.startCurvature != each.endCurvature && each.type != "CLOTHOID")
            conversion.tellPartLost(items[i], "the curve goes by a clothoid; the design parameters keep its type");
        segments += (segments.empty() ? "" : ",") + segmentText(segment, i + 1 == items.size(), textOf(each.point),
                                                                each.direction * radians, each.geometry());
    }
    return segments.empty() ? Value() : conversion.make("IFCCOMPOSITECURVE((" + segments + "),.F.)");
}

Value gradientSegments(Conversion& conversion, const Record& record, const Value& value) {
    const Record vertical = conversion.record(value);
    const Values& items = vertical["Segments"].items;
    std::string segments;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const Record segment = conversion.record(items[i]);
        if (segment.has("TransitionCurveType"))
            conversion.tellPartLost(items[i], "vertical transitions are of other types; a line is in its place");
        const Vertical each(segment);
        const std::string point = "IFCCARTESIANPOINT((" + textOf(each.start) + ',' + textOf(each.height) + "))";
        segments += (segments.empty() ? "" : ",") +
                    segmentText(segment, i + 1 == items.size(), point, std::atan(each.gradient), each.geometry());
    }
    if (segments.empty()) {
        // Without a vertical part the curve runs level.
        double length = 0;
        const Record horizontal = conversion.record(record["Horizontal"]);
        for (const Value& each : horizontal["Segments"].items)
            length += Horizontal(conversion.record(conversion.record(each)["CurveGeometry"])).length;
        segments = segmentText({}, true, "IFCCARTESIANPOINT((0.,0.))", 0,
                               "IFCLENGTHMEASURE(0.),IFCLENGTHMEASURE(" + textOf(length) +
                                   "),IFCLINE(IFCCARTESIANPOINT((0.,0.)),IFCVECTOR(IFCDIRECTION((1.,0.)),1.))");
    }
    return conversion.make('(' + segments + ')');
}

} // namespace vnifc::conversion
