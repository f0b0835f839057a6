// Making, copying and freeing the records of a label tree, and reading their fields.
#include "odl/record.h"

#include "base/memory.h"
#include "odl/characters.h"
#include "odl/odl.h"

#include <new>

int odl_errno = 0;

namespace {

using odl::view_of;

char *copy_of(std::string_view text) {
    return text.data() ? OaCopyText(text) : nullptr;
}

template <typename Record>
Record *new_record() {
    void *block = OaMalloc(sizeof(Record));
    if (!block) {
        odl_errno = 50;
        OaOutOfMemory();
    }
    return new (block) Record{};
}

void free_texts(const ObjDesc *object) {
    OaFree(object->class_name);
    OaFree(object->pre_comment);
    OaFree(object->line_comment);
    OaFree(object->post_comment);
    OaFree(object->end_comment);
    OaFree(object->file_name);
}

// The argument, noting a null one.
template <typename Record>
Record *required(Record *record) {
    if (!record)
        odl_errno = 1;
    return record;
}

}  // namespace

ObjDesc *odl::new_obj_desc(const ObjDescTexts &texts, int16_t is_a_group, int32_t line_number) {
    auto *object = new_record<ObjDesc>();
    object->class_name = copy_of(texts.class_name);
    object->pre_comment = copy_of(texts.pre_comment);
    object->line_comment = copy_of(texts.line_comment);
    object->post_comment = copy_of(texts.post_comment);
    object->end_comment = copy_of(texts.end_comment);
    object->file_name = copy_of(texts.file_name);
    object->is_a_group = is_a_group;
    object->line_number = line_number;
    return object;
}

Kwd *odl::new_kwd(const KwdTexts &texts, int32_t line_number) {
    auto *keyword = new_record<Kwd>();
    keyword->name = copy_of(texts.name);
    keyword->file_name = copy_of(texts.file_name);
    keyword->value = copy_of(texts.value);
    keyword->size = static_cast<uint32_t>(texts.value.size());
    keyword->pre_comment = copy_of(texts.pre_comment);
    keyword->line_comment = copy_of(texts.line_comment);
    keyword->is_a_pointer = texts.name.starts_with('^');
    keyword->is_a_list = texts.value.starts_with('(') || texts.value.starts_with('{');
    keyword->line_number = line_number;
    return keyword;
}

ObjDesc *OdlNewObjDesc(const char *class_name, const char *pre_comment, const char *line_comment,
                       const char *post_comment, const char *end_comment, const char *file_name, int16_t is_a_group,
                       int32_t line_number) {
    return odl::new_obj_desc({view_of(class_name), view_of(pre_comment), view_of(line_comment), view_of(post_comment),
                              view_of(end_comment), view_of(file_name)},
                             is_a_group, line_number);
}

ObjDesc *OdlCopyObjDesc(const ObjDesc *object) {
    if (!required(object))
        return nullptr;
    return OdlNewObjDesc(object->class_name, object->pre_comment, object->line_comment, object->post_comment,
                         object->end_comment, object->file_name, object->is_a_group, object->line_number);
}

Kwd *OdlNewKwd(const char *name, const char *value, const char *pre_comment, const char *line_comment,
               const char *file_name, int32_t line_number) {
    return odl::new_kwd(
        {view_of(name), view_of(value), view_of(pre_comment), view_of(line_comment), view_of(file_name)}, line_number);
}

Kwd *OdlCopyKwd(const Kwd *keyword) {
    if (!required(keyword))
        return nullptr;
    return OdlNewKwd(keyword->name, keyword->value, keyword->pre_comment, keyword->line_comment, keyword->file_name,
                     keyword->line_number);
}

ObjDesc *OdlFreeTree(ObjDesc *object) {
    // The children are put before the right siblings, so that one chain holds all that is left to free.
    while (object) {
        ObjDesc *next = object->right_sibling;
        if (object->first_child) {
            object->last_child->right_sibling = next;
            next = object->first_child;
        }
        OdlFreeAllKwds(object);
        free_texts(object);
        OaFree(object);
        object = next;
    }
    return nullptr;
}

void OdlFreeAllKwds(ObjDesc *object) {
    if (!required(object))
        return;
    for (Kwd *keyword = object->first_keyword; keyword;)
        keyword = OdlFreeKwd(keyword);
    object->first_keyword = nullptr;
    object->last_keyword = nullptr;
}

Kwd *OdlFreeKwd(Kwd *keyword) {
    if (!required(keyword))
        return nullptr;
    Kwd *next = keyword->right_sibling;
    OaFree(keyword->name);
    OaFree(keyword->file_name);
    OaFree(keyword->value);
    OaFree(keyword->pre_comment);
    OaFree(keyword->line_comment);
    OaFree(keyword);
    return next;
}

const char *OdlGetObjDescClassName(const ObjDesc *object) {
    return required(object) ? object->class_name : nullptr;
}

uint32_t OdlGetObjDescChildCount(const ObjDesc *object) {
    if (!required(object))
        return 0;
    uint32_t count = 0;
    for (const ObjDesc *child = object->first_child; child; child = child->right_sibling)
        ++count;
    return count;
}

Kwd *OdlGetFirstKwd(const ObjDesc *object) {
    return required(object) ? object->first_keyword : nullptr;
}

Kwd *OdlGetNextKwd(const Kwd *keyword) {
    return required(keyword) ? keyword->right_sibling : nullptr;
}

const char *OdlGetKwdName(const Kwd *keyword) {
    return required(keyword) ? keyword->name : nullptr;
}

const char *OdlGetKwdValue(const Kwd *keyword) {
    return required(keyword) ? keyword->value : nullptr;
}

OdlValueType OdlGetKwdValueType(const Kwd *keyword) {
    return required(keyword) ? OdlDataType(keyword->value) : VALUE_UNKNOWN;
}

const char *OdlGetLabelVersion(const ObjDesc *object) {
    if (!required(object))
        return nullptr;
    constexpr const char *version_names[] = {"KRV_VERSION_ID", "ODL_VERSION_NUMBER", "ODL_VERSION_ID"};
    for (const char *name : version_names) {
        // The search changes nothing; it takes a modifiable start because it may return what it starts from.
        if (const Kwd *keyword = OdlFindKwd(const_cast<ObjDesc *>(object), name, nullptr, 1, SCOPE_THIS_OBJECT))
            return keyword->value;
    }
    return nullptr;
}
