#pragma once
#include <vnifc/Model.h>

#include <array>

namespace vnifc {

/// Rows of a 4x4 matrix that takes the coordinates of an object, as columns, to those of the project. In the project's
/// unit of length.
struct Matrix4 {
    std::array<std::array<double, 4>, 4> rows{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};

    const std::array<double, 4>& operator[](std::size_t row) const noexcept { return rows[row]; }
    /// A point in the object's coordinates, in those of the project.
    std::array<double, 3> apply(const std::array<double, 3>& point) const noexcept {
        std::array<double, 3> result{};
        for (std::size_t i = 0; i < 3; ++i)
            result[i] = rows[i][0] * point[0] + rows[i][1] * point[1] + rows[i][2] * point[2] + rows[i][3];
        return result;
    }
    friend Matrix4 operator*(const Matrix4& left, const Matrix4& right) noexcept {
        Matrix4 product;
        for (std::size_t i = 0; i < 4; ++i)
            for (std::size_t j = 0; j < 4; ++j) {
                product.rows[i][j] = 0;
                for (std::size_t k = 0; k < 4; ++k)
                    product.rows[i][j] += left.rows[i][k] * right.rows[k][j];
            }
        return product;
    }
};

/// The placement of a product, or of an IfcLocalPlacement, in the coordinates of the project: the chain of local
/// placements up to the one that is relative to none. The identity for a product without a placement. Throws BadValue
/// for any other kind of placement and for chains that run in circles or lack what they need.
VNIFC_LAYER_API Matrix4 placement(const Instance& product);

} // namespace vnifc
