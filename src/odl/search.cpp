// Walking the tree and finding objects and keywords in it.
#include "odl/odl.h"

namespace {

// Two positions walk together. At a difference the text is taken up again one character after where the last "*"
// began; earlier ones never need to be tried again, so the time is at most pattern times text.
bool matches(const char *pattern, const char *text) {
    const char *after_star = nullptr;
    const char *retry = nullptr;
    while (*text) {
        if (*pattern == '*') {
            after_star = ++pattern;
            retry = text;
        } else if (*pattern == *text) {
            ++pattern;
            ++text;
        } else if (after_star) {
            pattern = after_star;
            text = ++retry;
        } else {
            return false;
        }
    }
    // At the text's end a "*" stands for nothing only where no more pattern follows, so "A**" does not match "A".
    return *pattern == '\0' || (pattern[0] == '*' && pattern[1] == '\0');
}

bool fits(const char *pattern, const char *text) {
    return !pattern || (text && matches(pattern, text));
}

const Kwd *first_kwd_named(const ObjDesc *object, const char *pattern) {
    const Kwd *keyword = object->first_keyword;
    while (keyword && !fits(pattern, keyword->name))
        keyword = keyword->right_sibling;
    return keyword;
}

bool object_fits(const ObjDesc *object, const char *class_name, const char *keyword_name, const char *keyword_value) {
    if (!fits(class_name, object->class_name))
        return false;
    if (!keyword_name)
        return !keyword_value;
    const Kwd *keyword = first_kwd_named(object, keyword_name);
    return keyword && fits(keyword_value, keyword->value);
}

}  // namespace

ObjDesc *OdlTraverseTree(const ObjDesc *object, uint32_t root_level) {
    if (!object)
        return nullptr;
    if (object->first_child)
        return object->first_child;
    while (!object->right_sibling) {
        object = object->parent;
        if (!object || object->level <= root_level)
            return nullptr;
    }
    return object->right_sibling;
}

ObjDesc *OdlNextObjDesc(const ObjDesc *object, uint32_t root_level, int *scope) {
    if (!object)
        return nullptr;
    switch (*scope) {
        case SCOPE_SUBTREE:
            return OdlTraverseTree(object, root_level);
        case SCOPE_CHILDREN:
            *scope = SCOPE_SIBLINGS;
            return object->first_child;
        case SCOPE_SIBLINGS:
            return object->right_sibling;
        case SCOPE_THIS_OBJECT:
            return nullptr;
        default:
            return OdlTraverseTree(object, 0);
    }
}

ObjDesc *OdlFindObjDesc(ObjDesc *start, const char *class_name, const char *keyword_name, const char *keyword_value,
                        uint32_t instance, int scope) {
    if (!start) {
        odl_errno = 1;
        return nullptr;
    }
    uint32_t found = 0;
    for (ObjDesc *object = start; object; object = OdlNextObjDesc(object, start->level, &scope)) {
        if (object_fits(object, class_name, keyword_name, keyword_value) && ++found >= instance)
            return object;
    }
    return nullptr;
}

Kwd *OdlFindKwd(ObjDesc *start, const char *name, const char *value, uint32_t instance, int scope) {
    if (!start) {
        odl_errno = 1;
        return nullptr;
    }
    uint32_t found = 0;
    for (ObjDesc *object = start; object; object = OdlNextObjDesc(object, start->level, &scope)) {
        for (Kwd *keyword = object->first_keyword; keyword; keyword = keyword->right_sibling) {
            if (fits(name, keyword->name) && fits(value, keyword->value) && ++found >= instance)
                return keyword;
        }
    }
    return nullptr;
}

Kwd *OdlNextKwd(Kwd *start_keyword, const char *name, const char *value, uint32_t instance, int scope) {
    if (!start_keyword) {
        odl_errno = 1;
        return nullptr;
    }
    uint32_t found = 0;
    const ObjDesc *object = start_keyword->parent;
    const uint32_t root_level = object ? object->level : 0;
    Kwd *keyword = start_keyword;
    for (;;) {
        for (; keyword; keyword = keyword->right_sibling) {
            if (fits(name, keyword->name) && fits(value, keyword->value) && ++found >= instance)
                return keyword;
        }
        object = OdlNextObjDesc(object, root_level, &scope);
        if (!object)
            return nullptr;
        keyword = object->first_keyword;
    }
}

int OdlWildCardCompare(const char *pattern, const char *text) {
    return pattern && text && matches(pattern, text);
}
