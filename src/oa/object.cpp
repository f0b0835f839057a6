#include "oa/jpeg2000.h"
#include "oa/object_read.h"
#include "oa/table_columns.h"

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

OaObject *OaReadObject(const ObjDesc *node) {
    if (is_table_like(node))
        return OaReadTable(node);
    const OaObjectClass object_class = OaGetObjectClass(node);
    switch (object_class) {
        case OA_IMAGE:
            return OaIsJpeg2000Image(node) ? OaReadJpeg2000Image(node, 1) : OaReadImage(node, 1);
        case OA_HISTOGRAM:
            return OaReadHistogram(node);
        case OA_ARRAY:
        case OA_COLLECTION:
        case OA_ELEMENT:
            return read_described_object(__func__, node);
        default:
            OaReportFailure(530, "%s: no reader for %s objects.", __func__, OaObjectClasstoStr(object_class));
            return nullptr;
    }
}
