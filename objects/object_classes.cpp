#include "objects/object_classes.h"

#include "objects/controllers/controller_classes.h"
#include "objects/image/GeneralImageParser.h"
#include "objects/scene/Object3D.h"

namespace kst {

std::vector<PersistentClass> object_classes() {
    const auto controllers = controller_classes();
    std::vector<PersistentClass> classes(controllers.begin(), controllers.end());
    classes.push_back(persistent_class<Object3D>());
    classes.push_back(persistent_class<GeneralImageParser>());
    return classes;
}

void register_object_classes(ObjectCreatorTable& table) {
    for (const PersistentClass& row : object_classes())
        table.register_creator(row.type_id, row.create);
}

} // namespace kst
