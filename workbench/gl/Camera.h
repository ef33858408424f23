// SPDX-License-Identifier: Apache-2.0
// Where a picture is taken from.
#pragma once

#include "host/Export.h"
#include "host/rendering/BoundingSphere.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

namespace workbench {

/// A perspective camera in world units; angles in degrees.
struct KROD_API Camera {
    static constexpr double DefaultFieldOfView = 30;

    glm::dvec3 eye{0, 0, 4};
    glm::dvec3 target{0, 0, 0};
    glm::dvec3 up{0, 1, 0};
    double fieldOfView = DefaultFieldOfView; ///< vertical
    double nearPlane = 0.1;
    double farPlane = 100;

    /// On +z of the sphere's centre with +y up, as near as the whole sphere fits into a picture of that
    /// aspect (width divided by height). An empty sphere counts as one of radius 1.
    [[nodiscard]] static Camera fitted(const krod::BoundingSphere& sphere, double aspect,
                                       double fieldOfView = DefaultFieldOfView);
    /// On +z with +y up, as near as a rectangle of that size around 0 fits into the picture.
    [[nodiscard]] static Camera facing(const glm::dvec3& size, double aspect,
                                       double fieldOfView = DefaultFieldOfView);
    /// Throws Failure(Usage) by the name "camera" where eye and target coincide or the angle is none between 0 and
    /// 180, by the name "up" where `up` points along the view. The planes are those around the sphere.
    [[nodiscard]] static Camera between(const glm::dvec3& eye, const glm::dvec3& target, const glm::dvec3& up,
                                        double fieldOfView, const krod::BoundingSphere& sphere);

    /// The model-view matrix.
    [[nodiscard]] glm::dmat4 view() const;
    /// The projection matrix of a picture of that aspect.
    [[nodiscard]] glm::dmat4 projection(double aspect) const;

private:
    void setPlanes(const krod::BoundingSphere& sphere);
};

} // namespace workbench
