#pragma once
#include "Tables.h"

/// The values that cannot be taken over but must be made. Each is named by one or several lines of the tables.
namespace vnifc::conversion {

// Dates and times (Dates.cpp)
Value dateText(Conversion&, const Record&, const Value&);
Value dateTimeText(Conversion&, const Record&, const Value&);
Value timeText(Conversion&, const Record&, const Value&);
Value durationText(Conversion&, const Record&, const Value&);
Value durationNumber(Conversion&, const Record&, const Value&);
Value calendarDate(Conversion&, const Record&, const Value&);
Value dateAndTime(Conversion&, const Record&, const Value&);
Value localTime(Conversion&, const Record&, const Value&);
Value dateOfText(Conversion&, const Record&, const Value&);
Value dateTimeOfText(Conversion&, const Record&, const Value&);
Value lagTime(Conversion&, const Record&, const Value&);
Value lagNumber(Conversion&, const Record&, const Value&);

// Resources (Resources.cpp)
Value mimeType(Conversion&, const Record&, const Value&);
Value facetText(Conversion&, const Record&, const Value&);
Value facetsText(Conversion&, const Record&, const Value&);
Value materialsOf(Conversion&, const Record&, const Value&);
Value profileOfProperties(Conversion&, const Record&, const Value&);
Value profileSetOfProperties(Conversion&, const Record&, const Value&);

// Geometry (Geometry.cpp)
Value locationOfPlacement(Conversion&, const Record&, const Value&);
Value bezierMultiplicities(Conversion&, const Record&, const Value&);
Value bezierKnots(Conversion&, const Record&, const Value&);
Value facesOfTriangles(Conversion&, const Record&, const Value&);
Value facesOfPolygons(Conversion&, const Record&, const Value&);
Value pointsOfIndexedCurve(Conversion&, const Record&, const Value&);
Value endParameter(Conversion&, const Record&, const Value&);

// Alignment and what is placed along it (Alignment.cpp)
Value axisPlacement(Conversion&, const Record&, const Value&);
Value positionInSpace(Conversion&, const Record&, const Value&);
Value distanceOfPlacement(Conversion&, const Record&, const Value&);
Value curveOfPlacement(Conversion&, const Record&, const Value&);
Value orientationOfPlacement(Conversion&, const Record&, const Value&);
Value pointOnCurve(Conversion&, const Record&, const Value&);
Value placementOnCurve(Conversion&, const Record&, const Value&);
Value distanceOfPoint(Conversion&, const Record&, const Value&);
Value alignmentShape(Conversion&, const Record&, const Value&);
Value horizontalCurve(Conversion&, const Record&, const Value&);
Value gradientSegments(Conversion&, const Record&, const Value&);

} // namespace vnifc::conversion
