#include "objects/object_classes.h"

#include "objects/controllers/controller_classes.h"
#include "objects/image/GeneralImageParser.h"
#include "objects/scene/Object3D.h"
#include "objects/stats/StatsBlock.h"

namespace kst {

namespace {

/// Its data end with its name.
constexpr PersistentClass stats_block_class{
    .name = StatsBlock::script_name,
    .type_id = StatsBlock::class_type_id,
    .create = []() -> std::unique_ptr<PersistentObject> { return std::make_unique<StatsBlock>(); },
    .dump_fields = [](DumpForm& /*form*/) {}};

} // namespace

std::vector<PersistentClass> object_classes() {
    const auto controllers = controller_classes();
    std::vector<PersistentClass> classes(controllers.begin(), controllers.end());
    classes.push_back(persistent_class<Object3D>());
    classes.push_back(persistent_class<GeneralImageParser>());
    classes.push_back(stats_block_class);
    return classes;
}

void register_object_classes(ObjectCreatorTable& table) {
    for (const PersistentClass& row : object_classes())
        table.register_creator(row.type_id, row.create);
}

} // namespace kst
