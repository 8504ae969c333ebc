#include "Parameters.h"

#include <algorithm>

namespace vnifc::detail {

namespace {

// No curve of a person is made of others so deep.
constexpr unsigned kMaxDepth = 16;

/// An attribute that names a point of a curve by its parameter.
struct CurveParameter {
    std::string_view entity; ///< subtypes included
    std::string_view attribute;
    std::string_view curve; ///< the attribute that has the curve
};

// Of all releases; names that a release lacks do not matter.
constexpr CurveParameter kOfCurves[] = {
    {"IfcTrimmedCurve", "Trim1", "BasisCurve"},
    {"IfcTrimmedCurve", "Trim2", "BasisCurve"},
    {"IfcPointOnCurve", "PointParameter", "BasisCurve"},
    {"IfcPointByDistanceExpression", "DistanceAlong", "BasisCurve"},
    {"IfcCurveSegment", "SegmentStart", "ParentCurve"},
    {"IfcCurveSegment", "SegmentLength", "ParentCurve"},
    {"IfcSweptDiskSolid", "StartParam", "Directrix"},
    {"IfcSweptDiskSolid", "EndParam", "Directrix"},
    {"IfcSweptAreaSolid", "StartParam", "Directrix"},
    {"IfcSweptAreaSolid", "EndParam", "Directrix"},
};

// Knots, normals and coordinates of textures.
constexpr std::string_view kPlainAttributes[] = {"Knots",       "UKnots",        "VKnots",
                                                 "Coordinates", "TexCoordsList", "Normals"};

Instance targetOf(const Instance& instance, std::string_view attribute) {
    return instance.has(attribute) ? instance[attribute].valueOr(Instance()) : Instance();
}

bool isAny(const Instance& instance, std::initializer_list<std::string_view> entities) {
    return std::ranges::any_of(entities, [&](std::string_view each) { return instance.is(each); });
}

ParameterKind kindOfCurve(const Instance& curve, unsigned depth = 0);

/// That of all segments, if it is the same.
ParameterKind kindOfSegments(const Instance& curve, unsigned depth) {
    const auto segments = curve["Segments"].valueOr(std::vector<Instance>());
    ParameterKind kind = ParameterKind::kUnknown;
    for (const Instance& segment : segments) {
        const Instance parent = segment ? targetOf(segment, "ParentCurve") : Instance();
        const ParameterKind each = kindOfCurve(parent, depth + 1);
        if (segment != segments.front() && each != kind)
            return ParameterKind::kUnknown;
        kind = each;
    }
    return kind;
}

ParameterKind kindOfCurve(const Instance& curve, unsigned depth) {
    if (!curve || depth > kMaxDepth)
        return ParameterKind::kUnknown;
    if (curve.is("IfcConic"))
        return ParameterKind::kAngle;
    // The parameter of a line counts vectors, whose length is converted.
    if (isAny(curve, {"IfcLine", "IfcPolyline", "IfcBSplineCurve"}))
        return ParameterKind::kPlain;
    if (isAny(curve, {"IfcTrimmedCurve", "IfcOffsetCurve2D", "IfcOffsetCurve3D"}))
        return kindOfCurve(targetOf(curve, "BasisCurve"), depth + 1);
    if (curve.is("IfcSurfaceCurve"))
        return kindOfCurve(targetOf(curve, "Curve3D"), depth + 1);
    return curve.is("IfcCompositeCurve") ? kindOfSegments(curve, depth) : ParameterKind::kUnknown;
}

ParameterKind kindOfSurface(const Instance& surface, bool isFirst) {
    if (!surface)
        return ParameterKind::kUnknown;
    if (surface.is("IfcPlane"))
        return ParameterKind::kLength;
    if (surface.is("IfcCylindricalSurface"))
        return isFirst ? ParameterKind::kAngle : ParameterKind::kLength;
    if (isAny(surface, {"IfcSphericalSurface", "IfcToroidalSurface"}))
        return ParameterKind::kAngle;
    return surface.is("IfcBSplineSurface") ? ParameterKind::kPlain : ParameterKind::kUnknown;
}

} // namespace

ParameterKind parameterKind(const Instance& instance, std::string_view attribute) {
    for (const CurveParameter& each : kOfCurves)
        if (attribute == each.attribute && instance.is(each.entity))
            return kindOfCurve(targetOf(instance, each.curve));
    if (isAny(instance, {"IfcRectangularTrimmedSurface", "IfcPointOnSurface"})) {
        const bool isFirst = attribute == "U1" || attribute == "U2" || attribute == "PointParameterU";
        return kindOfSurface(targetOf(instance, "BasisSurface"), isFirst);
    }
    if (instance.is("IfcReparametrisedCompositeCurveSegment"))
        return ParameterKind::kUnknown;
    const bool isOfProperty = !instance.is("IfcRepresentationItem");
    return isOfProperty || std::ranges::find(kPlainAttributes, attribute) != std::end(kPlainAttributes)
               ? ParameterKind::kPlain
               : ParameterKind::kUnknown;
}

bool hasLengthsAsParameters(const Instance& surface) { return surface && surface.is("IfcPlane"); }

} // namespace vnifc::detail
