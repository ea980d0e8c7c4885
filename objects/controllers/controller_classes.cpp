#include "objects/controllers/controller_classes.h"

#include "objects/controllers/CompositeControllers.h"
#include "objects/controllers/ConstControllers.h"
#include "objects/controllers/KeyedControllers.h"
#include "objects/controllers/LookAtControllers.h"
#include "objects/controllers/SceneAlignControllers.h"

#include <array>

namespace kst {

std::span<const PersistentClass> controller_classes() {
    static constexpr std::array classes{
        persistent_class<ConstFloatController>(),
        persistent_class<ConstVector2Controller>(),
        persistent_class<ConstVector3Controller>(),
        persistent_class<ConstRotationController>(),
        persistent_class<StepFloatController>(),
        persistent_class<StepVector2Controller>(),
        persistent_class<StepVector3Controller>(),
        persistent_class<LinearFloatController>(),
        persistent_class<LinearVector2Controller>(),
        persistent_class<LinearVector3Controller>(),
        persistent_class<BezierFloatController>(),
        persistent_class<BezierVector3Controller>(),
        persistent_class<QuatLinearRotationController>(),
        // Shares the identifier of the row above, which is the one that a stream gives.
        persistent_class<QuatLinearRotationControllerPacked>(),
        persistent_class<QuatBezRotationController>(),
        persistent_class<XYZVector3Controller>(),
        persistent_class<EulerRotationController>(),
        persistent_class<LookAtRotationController>(),
        persistent_class<LookAtConstrRotationController>(),
        persistent_class<Object3DAlignVector3Controller>(),
        persistent_class<Object3DAlignRotationController>(),
    };
    return classes;
}

} // namespace kst
