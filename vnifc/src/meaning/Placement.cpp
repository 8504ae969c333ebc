#include "../model/ModelState.h"

#include <vnifc/Placement.h>

#include <cmath>

namespace vnifc {

using detail::Entity;
using detail::ModelState;
using detail::Name;
using VN_SDAI::VnIfcEntityBase;

namespace {

using Vector = std::array<double, 3>;

double dot(const Vector& a, const Vector& b) noexcept { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Vector cross(const Vector& a, const Vector& b) noexcept {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// Reads placements and says what it does not know.
class PlacementReader {
public:
    explicit PlacementReader(ModelState& state) : m_state(state) {}

    Matrix4 chain(const VnIfcEntityBase& first) const {
        Matrix4 result;
        const VnIfcEntityBase* each = &first;
        for (unsigned depth = 0; each; ++depth) {
            if (depth > kMaxDepth)
                refuse(first, "its chain runs in a circle or has no end");
            if (!m_state.is(*each, Entity::IfcLocalPlacement))
                refuse(*each, "only local placements are supported");
            const VnIfcEntityBase* axes = m_state.target(*each, Name::RelativePlacement);
            if (!axes)
                refuse(*each, "it has no RelativePlacement");
            result = relative(*axes) * result;
            each = m_state.target(*each, Name::PlacementRelTo);
        }
        return result;
    }

private:
    static constexpr unsigned kMaxDepth = 256;
    static constexpr double kTiny = 1e-12;

    [[noreturn]] void refuse(const VnIfcEntityBase& instance, const std::string& why) const {
        const Instance found = m_state.wrap(instance);
        throw BadValue("the placement #" + std::to_string(found.id()) + ' ' + std::string(found.keyword()) +
                       " cannot be computed: " + why);
    }

    /// IfcAxis2Placement2D and 3D, by the functions of the standard that derive their axes.
    Matrix4 relative(const VnIfcEntityBase& axes) const {
        const bool isFlat = m_state.is(axes, Entity::IfcAxis2Placement2D);
        if (!isFlat && !m_state.is(axes, Entity::IfcAxis2Placement3D))
            refuse(axes, "only IfcAxis2Placement2D and IfcAxis2Placement3D are supported");
        const VnIfcEntityBase* point = m_state.target(axes, Name::Location);
        if (!point || !m_state.has(*point, Name::Coordinates))
            refuse(axes, "its location is no IfcCartesianPoint");
        const Vector origin = numbers(*point, Name::Coordinates);
        const Vector z = isFlat ? Vector{0, 0, 1} : direction(axes, Name::Axis, {0, 0, 1});
        const Vector x = across(axes, z, direction(axes, Name::RefDirection, unlike(z)));
        const Vector y = cross(z, x);
        Matrix4 result;
        for (std::size_t i = 0; i < 3; ++i)
            result.rows[i] = {x[i], y[i], z[i], origin[i]};
        return result;
    }

    static Vector unlike(const Vector& z) noexcept {
        return std::abs(z[1]) < kTiny && std::abs(z[2]) < kTiny ? Vector{0, 0, 1} : Vector{1, 0, 0};
    }

    /// The part of a direction that is perpendicular to the axis, of length 1.
    Vector across(const VnIfcEntityBase& axes, const Vector& z, const Vector& wanted) const {
        const double along = dot(z, wanted);
        return normalized(axes, {wanted[0] - along * z[0], wanted[1] - along * z[1], wanted[2] - along * z[2]});
    }

    Vector direction(const VnIfcEntityBase& axes, Name name, const Vector& otherwise) const {
        const VnIfcEntityBase* found = m_state.target(axes, name);
        return found ? normalized(axes, numbers(*found, Name::DirectionRatios)) : otherwise;
    }

    Vector normalized(const VnIfcEntityBase& axes, const Vector& vector) const {
        const double length = std::sqrt(dot(vector, vector));
        if (!(length > kTiny))
            refuse(axes, "its directions have no length or are parallel");
        return {vector[0] / length, vector[1] / length, vector[2] / length};
    }

    Vector numbers(const VnIfcEntityBase& instance, Name name) const {
        const auto values = m_state.value(instance, name).get<std::vector<double>>();
        if (!values || values->empty() || values->size() > 3)
            refuse(instance, "one to three numbers are expected in it");
        Vector result{};
        std::ranges::copy(*values, result.begin());
        return result;
    }

    ModelState& m_state;
};

} // namespace

Matrix4 placement(const Instance& product) {
    ModelState& state = detail::stateOf(product);
    const VnIfcEntityBase& object = detail::opened(product);
    const PlacementReader reader(state);
    if (state.has(object, Name::RelativePlacement))
        return reader.chain(object);
    const VnIfcEntityBase* first = state.target(object, Name::ObjectPlacement);
    return first ? reader.chain(*first) : Matrix4();
}

} // namespace vnifc
