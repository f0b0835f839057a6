#include "oa/oa.h"

namespace {

// False after reporting a keyword that is there but is no count of bytes.
bool optional_bytes(const char *name, const ObjDesc *node, int64_t *bytes) {
    *bytes = 0;
    const char *text = nullptr;
    if (OaKwdValuetoStr(name, node, &text) != 0)
        return true;
    if (OaKwdValuetoLong(name, node, bytes) == 0 && *bytes >= 0)
        return true;
    OaReportFailure(531, "OaGetTableKeywords: %s is no number of bytes: %s.", name, text);
    return false;
}

}  // namespace

int OaGetTableKeywords(const ObjDesc *node, int64_t *rows, int64_t *row_bytes, int64_t *prefix, int64_t *suffix) {
    if (!node || !rows || !row_bytes || !prefix || !suffix) {
        OaReportFailure(501, "%s: node or result is NULL.", __func__);
        return -1;
    }
    if ((OaKwdValuetoLong("ROWS", node, rows) != 0 && OaKwdValuetoLong("RECORDS", node, rows) != 0) || *rows < 0) {
        OaReportFailure(531, "%s: ROWS keyword missing.", __func__);
        return -1;
    }
    if (OaKwdValuetoLong("ROW_BYTES", node, row_bytes) != 0 || *row_bytes < 0) {
        OaReportFailure(531, "%s: ROW_BYTES keyword missing.", __func__);
        return -1;
    }
    return optional_bytes("*PREFIX_BYTES", node, prefix) && optional_bytes("*SUFFIX_BYTES", node, suffix) ? 0 : -1;
}
