// SPDX-License-Identifier: Apache-2.0
// Cameras: where things land in the picture.
#include "workbench/gl/Camera.h"
#include "workbench/report/Failure.h"

#include <glm/geometric.hpp>
#include <glm/vec4.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace workbench::test {
namespace {

/// Normalised device coordinates of a point of the world.
glm::dvec3 seen(const Camera& camera, double aspect, const glm::dvec3& point) {
    const glm::dvec4 clip = camera.projection(aspect) * camera.view() * glm::dvec4(point, 1);
    return glm::dvec3(clip) / clip.w;
}

TEST(Camera, Fitted_sees_the_whole_sphere_and_no_more_than_needed) {
    const krod::BoundingSphere sphere{1, 2, 3, 5};
    const glm::dvec3 centre(1, 2, 3);
    for (const double aspect : {0.5, 1.0, 16.0 / 9}) {
        const Camera camera = Camera::fitted(sphere, aspect);
        double widest = 0;
        for (int i = 0; i < 400; ++i)
            for (int j = 0; j <= 200; ++j) {
                const double a = i * M_PI / 200, b = j * M_PI / 200;
                const glm::dvec3 at = centre + 5.0 * glm::dvec3(std::sin(b) * std::cos(a), std::cos(b),
                                                                std::sin(b) * std::sin(a));
                const glm::dvec3 p = seen(camera, aspect, at);
                widest = std::max({widest, std::abs(p.x), std::abs(p.y)});
                ASSERT_LE(std::abs(p.z), 1);
            }
        EXPECT_LE(widest, 1.0001);
        EXPECT_GE(widest, 0.99);
    }
}

TEST(Camera, Fitted_stands_on_positive_z_with_y_up) {
    const Camera camera = Camera::fitted({1, 2, 3, 5}, 1);
    EXPECT_EQ(camera.eye.x, 1);
    EXPECT_EQ(camera.eye.y, 2);
    EXPECT_NEAR(camera.eye.z, 3 + 5 / std::sin(15 * M_PI / 180), 1e-9);
    EXPECT_EQ(camera.fieldOfView, 30);
    EXPECT_GT(seen(camera, 1, {1, 3, 3}).y, 0);
    EXPECT_GT(seen(camera, 1, {2, 2, 3}).x, 0);
}

TEST(Camera, Empty_and_pointlike_objects_have_a_camera_too) {
    for (const krod::BoundingSphere sphere : {krod::BoundingSphere{}, krod::BoundingSphere{1, 1, 1, 0}}) {
        const Camera camera = Camera::fitted(sphere, 1);
        EXPECT_GT(camera.nearPlane, 0);
        EXPECT_GT(camera.farPlane, camera.nearPlane);
    }
}

TEST(Camera, Between_looks_at_its_target) {
    const Camera camera = Camera::between({3, 4, 5}, {1, 1, 1}, {0, 1, 0}, 40, {1, 1, 1, 1});
    const glm::dvec3 centre = seen(camera, 1.5, {1, 1, 1});
    EXPECT_NEAR(centre.x, 0, 1e-12);
    EXPECT_NEAR(centre.y, 0, 1e-12);
    EXPECT_NEAR(camera.nearPlane, std::sqrt(29.0) - 1.01, 1e-9);
    EXPECT_NEAR(camera.farPlane, std::sqrt(29.0) + 1.01, 1e-9);
}

TEST(Camera, Inside_of_the_object_the_near_plane_stays_in_front) {
    const Camera camera = Camera::between({0, 0, 0}, {0, 0, -1}, {0, 1, 0}, 40, {0, 0, 0, 10});
    EXPECT_GT(camera.nearPlane, 0);
    EXPECT_GE(camera.farPlane, 10);
}

TEST(Camera, Behind_everything_the_planes_stay_in_order) {
    const Camera camera = Camera::between({0, 0, 50}, {0, 0, 60}, {0, 1, 0}, 40, {0, 0, 0, 1});
    EXPECT_GT(camera.nearPlane, 0);
    EXPECT_GT(camera.farPlane, camera.nearPlane);
}

TEST(Camera, Impossible_views_are_refused) {
    const krod::BoundingSphere sphere{0, 0, 0, 1};
    EXPECT_THROW(static_cast<void>(Camera::between({1, 1, 1}, {1, 1, 1}, {0, 1, 0}, 30, sphere)), Failure);
    EXPECT_THROW(static_cast<void>(Camera::between({0, 5, 0}, {0, 0, 0}, {0, 1, 0}, 30, sphere)), Failure);
    EXPECT_THROW(static_cast<void>(Camera::between({0, 0, 5}, {0, 0, 0}, {0, 0, 0}, 30, sphere)), Failure);
    for (const double angle : {0.0, 180.0, -1.0, std::nan("")})
        EXPECT_THROW(static_cast<void>(Camera::between({0, 0, 5}, {0, 0, 0}, {0, 1, 0}, angle, sphere)),
                     Failure);
}

} // namespace
} // namespace workbench::test
