// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/Camera.h"

#include "workbench/report/Failure.h"

#include <glm/geometric.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/trigonometric.hpp>

#include <algorithm>
#include <cmath>

namespace workbench {
namespace {

constexpr double PlaneMargin = 1.01;    // objects that touch their sphere stay clear of the planes
constexpr double NearestShare = 1.0e-4; // of the far plane: keeps the depth values apart

glm::dvec3 centreOf(const krod::BoundingSphere& sphere) {
    return sphere.radius < 0 ? glm::dvec3(0) : glm::dvec3(sphere.x, sphere.y, sphere.z);
}

/// A single point is looked at as if it were a ball.
double radiusOf(const krod::BoundingSphere& sphere) { return sphere.radius > 0 ? sphere.radius : 1; }

Failure refusal(const char* who, const char* what, const char* expected) {
    return Failure(Fault::Usage, {who, what, expected, "", "", {}});
}

} // namespace

Camera Camera::fitted(const krod::BoundingSphere& sphere, double aspect, double fieldOfView) {
    const double vertical = glm::radians(fieldOfView) / 2;
    const double horizontal = std::atan(std::tan(vertical) * aspect);
    const double distance = radiusOf(sphere) / std::sin(std::min(vertical, horizontal));
    Camera camera;
    camera.target = centreOf(sphere);
    camera.eye = camera.target + glm::dvec3(0, 0, distance);
    camera.fieldOfView = fieldOfView;
    camera.setPlanes(sphere);
    return camera;
}

Camera Camera::facing(const glm::dvec3& size, double aspect, double fieldOfView) {
    const double half = std::max(size.y, size.x / aspect) / 2; // of the picture's height
    Camera camera;
    camera.eye = {0, 0, half / std::tan(glm::radians(fieldOfView) / 2)};
    camera.fieldOfView = fieldOfView;
    camera.setPlanes({0, 0, 0, glm::length(size) / 2});
    return camera;
}

Camera Camera::between(const glm::dvec3& eye, const glm::dvec3& target, const glm::dvec3& up,
                       double fieldOfView, const krod::BoundingSphere& sphere) {
    if (eye == target) throw refusal("camera", "has no direction", "an eye and a target at different places");
    const glm::dvec3 side = glm::cross(glm::normalize(target - eye), up);
    if (!(glm::length(side) > 1e-9 * glm::length(up)))
        throw refusal("up", "does not say which side is up", "an up direction across the view");
    if (!(fieldOfView > 0 && fieldOfView < 180))
        throw refusal("camera", "has no field of view", "degrees between 0 and 180");
    Camera camera;
    camera.eye = eye;
    camera.target = target;
    camera.up = up;
    camera.fieldOfView = fieldOfView;
    camera.setPlanes(sphere);
    return camera;
}

void Camera::setPlanes(const krod::BoundingSphere& sphere) {
    const double along = glm::dot(centreOf(sphere) - eye, glm::normalize(target - eye));
    const double radius = radiusOf(sphere) * PlaneMargin;
    farPlane = std::max(along + radius, radiusOf(sphere));
    nearPlane = std::max(along - radius, farPlane * NearestShare);
}

glm::dmat4 Camera::view() const { return glm::lookAt(eye, target, up); }

glm::dmat4 Camera::projection(double aspect) const {
    return glm::perspective(glm::radians(fieldOfView), aspect, nearPlane, farPlane);
}

} // namespace workbench
