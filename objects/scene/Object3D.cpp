#include "objects/scene/Object3D.h"

#include "source/utility/Errors.h"

#include <cstddef>

namespace kst {

Matrix4 Object3D::local_matrix() const {
    Matrix4 matrix = to_matrix(rotation_);
    matrix.set_row(3, position_);
    return matrix;
}

Matrix4 Object3D::world_matrix() const {
    Matrix4 world = local_matrix();
    // A circle comes back to the object that stood 1, 2, 4, 8 ... steps up the road, soon after the road has that length.
    const Object3D* mark = this;
    std::size_t next_mark = 1;
    std::size_t steps = 0;
    for (const Object3D* object = parent_; object != nullptr; object = object->parent_) {
        if (object == mark)
            throw ErrorWithCStack("Object3D::world_matrix() the parents of " + idstring_text(name()) +
                                  " form a circle");
        world = world * object->local_matrix();
        if (++steps == next_mark) {
            mark = object;
            next_mark *= 2;
        }
    }
    return world;
}

} // namespace kst
