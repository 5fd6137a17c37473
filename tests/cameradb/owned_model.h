#ifndef PHOTOLIB_TESTS_CAMERADB_OWNED_MODEL_H
#define PHOTOLIB_TESTS_CAMERADB_OWNED_MODEL_H

#include "cameradb/camera_db.h"

#include <memory>

/// Deletes a model's records, then the model, as the owner of a model has to.
struct DeleteModel {
    void operator()(CameraDB *model) const
    {
        qDeleteAll(model->albums);
        qDeleteAll(model->assets);
        delete model;
    }
};
using OwnedModel = std::unique_ptr<CameraDB, DeleteModel>;

/// A model as a parse starts with it: empty, all numbers 0.
inline OwnedModel emptyModel()
{
    return OwnedModel(new CameraDB());
}

#endif // PHOTOLIB_TESTS_CAMERADB_OWNED_MODEL_H
