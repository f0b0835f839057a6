#include "oa/oa.h"

OaObject *OaNewOaObject(ObjDesc *odl, void *data, int64_t size) {
    auto *object = new OaObject;
    object->odl = odl;
    object->data = data;
    object->size = size;
    return object;
}

OaObject *OaDeleteObject(OaObject *object) {
    if (object) {
        OdlFreeTree(object->odl);
        if (object->owns_data)
            OaFree(object->data);
        delete object;
    }
    return nullptr;
}
