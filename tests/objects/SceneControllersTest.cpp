#include "objects/controllers/ConstControllers.h"
#include "objects/controllers/LookAtControllers.h"
#include "objects/controllers/SceneAlignControllers.h"
#include "source/utility/Errors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>

namespace kst {
namespace {

constexpr float right_angle = std::numbers::pi_v<float> / 2;

Object3D object_at(const Vector3& position, Object3D* parent = nullptr, const GQuat& rotation = {}) {
    Object3D object;
    object.set_position(position);
    object.set_rotation(rotation);
    object.set_parent(parent);
    return object;
}

void expect_rows(const Matrix4& m, const std::array<Vector3, 4>& rows) {
    for (int i = 0; i < 4; ++i)
        EXPECT_LT(length(m.row(i) - rows[static_cast<std::size_t>(i)]), 1e-5f) << "row " << i;
}

TEST(Object3DTest, WorldIsThroughAllParents) {
    // A quarter turn about z takes x to y.
    Object3D root = object_at({10, 0, 0}, nullptr, rotation_about({0, 0, 1}, right_angle));
    Object3D arm = object_at({2, 0, 0}, &root, rotation_about({0, 0, 1}, right_angle));
    const Object3D hand = object_at({0, 0, 3}, &arm);
    expect_rows(arm.world_matrix(), {Vector3{-1, 0, 0}, {0, -1, 0}, {0, 0, 1}, {10, 2, 0}});
    EXPECT_LT(length(hand.world_position() - Vector3{10, 2, 3}), 1e-5f);
    root.set_parent(&arm);
    EXPECT_THROW(hand.world_matrix(), ErrorWithCStack);
    root.set_parent(&root);
    EXPECT_THROW(hand.world_matrix(), ErrorWithCStack);
}

TEST(LookAtTest, RowTwoPointsFromTheTarget) {
    Object3D target = object_at({1, 0, 0});
    Object3D object = object_at({11, 0, 0});
    LookAtRotationController look;
    Matrix4 matrix;
    EXPECT_FALSE(look.get_matrix(0, matrix));
    look.set_object(&object);
    look.set_target(&target);
    ASSERT_TRUE(look.get_matrix(0, matrix));
    expect_rows(matrix, {Vector3{0, 1, 0}, {0, 0, 1}, {1, 0, 0}, {0, 0, 0}});
    GQuat q;
    ASSERT_TRUE(look.get(0, q));
    EXPECT_NEAR(std::abs(dot(q, {0.5f, 0.5f, 0.5f, 0.5f})), 1, 1e-6);
    ConstFloatController roll(right_angle);
    look.set_roll(&roll);
    ASSERT_TRUE(look.get_matrix(0, matrix));
    expect_rows(matrix, {Vector3{0, 0, 1}, {0, -1, 0}, {1, 0, 0}, {0, 0, 0}});
    look.set_roll(nullptr);
    // Straight up, the two directions leave no level; and at the target there is no direction.
    look.set_up({-2, 0, 0});
    ASSERT_TRUE(look.get_matrix(0, matrix));
    EXPECT_EQ(matrix, Matrix4{});
    look.set_up({0, 0, 1});
    look.set_target(&object);
    ASSERT_TRUE(look.get_matrix(0, matrix));
    EXPECT_EQ(matrix, Matrix4{});
}

TEST(LookAtTest, IsBroughtIntoTheFrameOfTheParent) {
    Object3D target;
    // The parent takes x to y and y to -x, and moves by 5 along x.
    Object3D parent = object_at({5, 0, 0}, nullptr, rotation_about({0, 0, 1}, right_angle));
    Object3D object = object_at({}, &parent);
    LookAtRotationController look;
    look.set_object(&object);
    look.set_target(&target);
    Matrix4 matrix;
    ASSERT_TRUE(look.get_matrix(0, matrix));
    expect_rows(matrix, {Vector3{1, 0, 0}, {0, 0, 1}, {0, -1, 0}, {0, 5, 0}});
    expect_rows(matrix * parent.world_matrix(), {Vector3{0, 1, 0}, {0, 0, 1}, {1, 0, 0}, {0, 0, 0}});
}

/// The table of rows, line by line.
struct Construction {
    int row, build; ///< build: the value of bits 5-6
    int first, second;
    bool u_first; ///< of the cross product, with bit 7 clear
};

TEST(LookAtConstrTest, BuildsTheRowsOfItsTable) {
    const Vector3 d{2 / 7.0f, 3 / 7.0f, 6 / 7.0f};
    Object3D target = object_at({1, 1, 1});
    Object3D object = object_at({3, 4, 7});
    Object3D up_object = object_at({9, 9, 9}, nullptr, rotation_about({1, 1, 0}, 0.4f));
    for (const Construction& c : {Construction{0, 2, 1, 2, true},
                                  {0, 0, 2, 1, false},
                                  {0, 1, 2, 1, false},
                                  {0, 3, 2, 1, false},
                                  Construction{1, 1, 0, 2, false},
                                  {1, 2, 0, 2, false},
                                  {1, 3, 0, 2, false},
                                  {1, 0, 2, 0, true},
                                  Construction{2, 1, 0, 1, true},
                                  {2, 2, 0, 1, true},
                                  {2, 3, 0, 1, true},
                                  {2, 0, 1, 0, false}})
        for (unsigned rest = 0; rest < 24; ++rest) {
            const unsigned axis = rest % 3, positive = rest / 3 % 2, reversed = rest / 6 % 2, own_up = rest / 12;
            LookAtConstrRotationController look;
            look.set_object(&object);
            look.set_target(&target);
            look.set_up_object(own_up ? &up_object : nullptr);
            look.set_flags(axis | static_cast<unsigned>(c.row) << 2 | positive << 4 |
                           static_cast<unsigned>(c.build) << 5 | reversed << 7);
            const Vector3 u = (own_up ? up_object.world_matrix() : Matrix4{}).row(static_cast<int>(axis));
            const Vector3 taken = positive ? d : -d;
            const Vector3 built = normalised(c.u_first != (reversed == 1) ? cross(u, taken) : cross(taken, u));
            Matrix4 matrix;
            ASSERT_TRUE(look.get_matrix(0, matrix));
            EXPECT_LT(length(matrix.row(c.row) - taken), 1e-6f);
            EXPECT_LT(length(matrix.row(c.first) - built), 1e-6f) << c.row << c.build << rest;
            // The last row makes the frame a right-handed one.
            EXPECT_LT(length(matrix.row(0) - cross(matrix.row(1), matrix.row(2))), 1e-5f);
            EXPECT_EQ(c.row + c.first + c.second, 3);
        }
    LookAtConstrRotationController look;
    look.set_object(&object);
    look.set_target(&target);
    for (const unsigned flags : {3u << 2, 3u}) {
        look.set_flags(flags);
        Matrix4 matrix = to_matrix({1, 0, 0, 0});
        ASSERT_TRUE(look.get_matrix(0, matrix));
        EXPECT_EQ(matrix, Matrix4{});
    }
}

TEST(SceneControllersTest, FollowTheirObject) {
    Object3D parent = object_at({5, 0, 0}, nullptr, rotation_about({0, 0, 1}, right_angle));
    Object3D object = object_at({1, 0, 0}, &parent);
    Object3DAlignVector3Controller position;
    Object3DAlignRotationController rotation;
    Vector3 place;
    Matrix4 matrix;
    EXPECT_FALSE(position.get(0, place));
    EXPECT_FALSE(rotation.get_matrix(0, matrix));
    position.set_object(&object);
    rotation.set_object(&object);
    ASSERT_TRUE(position.get(0, place) && rotation.get_matrix(0, matrix));
    EXPECT_LT(length(place - Vector3{5, 1, 0}), 1e-6f);
    expect_rows(matrix, {Vector3{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}, {0, 0, 0}});
}

TEST(SceneControllersTest, AreClonedWithTheirScene) {
    Object3D parent, target, up;
    Object3D object = object_at({1, 2, 3}, &parent);
    ConstFloatController roll(1);
    LookAtRotationController look;
    look.set_roll(&roll);
    look.set_target(&target);
    look.set_object(&object);
    look.set_up({1, 0, 0});
    LookAtConstrRotationController constr;
    constr.set_flags(7);
    constr.set_object(&object);
    constr.set_up_object(&up);
    Object3DAlignVector3Controller align;
    align.set_object(&object);
    CloneManager manager;
    const auto group = manager.group(manager.clone(std::array<Clonable*, 4>{&look, &constr, &align, &object}));
    ASSERT_EQ(group.size(), 8u);
    const auto& look2 = dynamic_cast<LookAtRotationController&>(*group[0].object);
    const auto& constr2 = dynamic_cast<LookAtConstrRotationController&>(*group[1].object);
    auto* const object2 = dynamic_cast<Object3D*>(group[3].object);
    EXPECT_NE(object2, &object);
    EXPECT_NE(object2->parent(), &parent);
    EXPECT_EQ(object2->position(), object.position());
    EXPECT_EQ(look2.roll(), &roll) << "a controller without a clone is shared";
    EXPECT_EQ(look2.object(), object2);
    EXPECT_EQ(look2.up(), look.up());
    EXPECT_EQ(constr2.flags(), 7u);
    EXPECT_EQ(constr2.target(), nullptr);
    EXPECT_NE(constr2.up_object(), &up);
    EXPECT_EQ(dynamic_cast<Object3DAlignVector3Controller&>(*group[2].object).object(), object2);

    std::vector<Object3D*> needed;
    look.collect_objects(needed);
    constr.collect_objects(needed);
    align.collect_objects(needed);
    EXPECT_THAT(needed, testing::ElementsAre(&target, &up));
}

} // namespace
} // namespace kst
