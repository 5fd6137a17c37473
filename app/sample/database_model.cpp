#include "sample/database_model.h"

namespace sample {

namespace {

// Entities are numbered by the alphabet, those that inherit behind their parent; so every new
// one moves others.
//                                 description, face, generic album, album, shared, project,
//                                 fetching, folder, import, generic asset, asset,
//                                 keyword, memory, person, suggestion
constexpr Entities earlyEntities = {0, 0, 14, 15, 16, 18, 19, 20, 21, 22, 23, 0, 0, 0, 0};
constexpr Entities entities13 = {5, 17, 25, 26, 27, 30, 31, 32, 33, 34, 35, 37, 40, 45, 52};
constexpr Entities entities14 = {5, 17, 25, 26, 27, 30, 31, 32, 33, 0, 3, 36, 40, 44, 54};
constexpr Entities entities16 = {6, 18, 27, 28, 29, 33, 35, 36, 37, 0, 3, 40, 44, 47, 58};
constexpr Entities entities18 = {6, 20, 29, 30, 31, 35, 37, 38, 39, 0, 3, 47, 51, 54, 65};
constexpr Entities entities26 = {6, 22, 32, 33, 34, 38, 40, 41, 42, 0, 3, 51, 55, 58, 70};

constexpr DatabaseModel models[] = {
    {SampleSchema::Early, 9203, "ZGENERICASSET", earlyEntities},
    {SampleSchema::V13, 13703, "ZGENERICASSET", entities13},
    {SampleSchema::V14, 14208, "ZASSET", entities14},
    {SampleSchema::V16, 16119, "ZASSET", entities16},
    {SampleSchema::V18, 18508, "ZASSET", entities18},
    {SampleSchema::V26, 19320, "ZASSET", entities26},
};

} // namespace

const DatabaseModel &modelOf(SampleSchema schema)
{
    for (const DatabaseModel &model : models)
        if (model.schema == schema)
            return model;
    return models[1];
}

} // namespace sample
