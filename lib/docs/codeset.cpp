#include "docs/codeset.h"

#include "core/list.h"
#include "core/raii.h"
#include "core/strings.h"

OvCodeset *ov_codeset_new()
{
    auto codeset = new OvCodeset{};
    codeset->remarks = ov_remark_list_new();
    return codeset;
}

OvCodeset *ov_codeset_clone(const OvCodeset *codeset)
{
    g_return_val_if_fail(codeset != nullptr, nullptr);
    OvCodeset *copy = ov_codeset_new();
    copy->name = ov_langstr_clone(codeset->name);
    copy->author = ov_langstr_clone(codeset->author);
    copy->version = g_strdup(codeset->version);
    ov_remark_list_copy_remarks(copy->remarks, codeset->remarks);
    copy->outdated = codeset->outdated;
    return copy;
}

void ov_codeset_remove(OvCodeset *codeset)
{
    g_return_if_fail(codeset != nullptr);
    ov::list_unlink(codeset);
}

void ov_codeset_destroy(OvCodeset *codeset)
{
    if (codeset == nullptr)
        return;
    ov::list_unlink(codeset);
    ov_langstr_free(codeset->name);
    ov_langstr_free(codeset->author);
    g_free(codeset->version);
    ov_remark_list_destroy(codeset->remarks);
    delete codeset;
}

int ov_codeset_get_index(const OvCodeset *codeset)
{
    g_return_val_if_fail(codeset != nullptr && codeset->previous != nullptr, -1);
    return static_cast<int>(ov::list_index(codeset));
}

char *ov_codeset_format_ui_string(const OvCodeset *codeset)
{
    g_return_val_if_fail(codeset != nullptr, nullptr);
    const char *name = ov_langstr_get_text(codeset->name, nullptr);
    const char *author = ov_langstr_get_text(codeset->author, nullptr);
    GString *text = g_string_new(name != nullptr ? name : "");
    if (author != nullptr)
        g_string_append_printf(text, " (%s)", author);
    if (codeset->version != nullptr)
        g_string_append_printf(text, " %s", codeset->version);
    if (codeset->outdated)
        g_string_append(text, " (outdated?)");
    ov::GStr latin1 = ov::gstr(g_string_free(text, FALSE));
    return ov_convert_latin1_to_utf8(latin1.get());
}
