#include "frame/template_list.h"

#include "docs/template_io.h"
#include "frame/workspace.h"

ov_template_list *ov_template_list_load()
{
    const char *folder_path = ov_workspace_get_templates_folder_path();
    if (folder_path == nullptr)
        return ov_template_list_new();
    return ov_template_list_load_from_folder(folder_path);
}
