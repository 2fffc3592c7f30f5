#include "frame/user_session.h"

#include "core/error.h"
#include "frame/message.h"
#include "frame/settings.h"
#include "frame/workspace.h"
#include "frame/workspace_gui.h"

gboolean ov_user_session_start()
{
    if (!ov_workspace_open()) {
        // No workspace yet (or an unusable one): the assistant offers a new one.
        ov_error_clear();
        if (!ov_workspace_gui_create_workspace())
            return FALSE;
        if (!ov_workspace_open()) {
            ov_error_clear();
            ov_message_show_error("Something went wrong when opening your new workspace.");
            return FALSE;
        }
    }
    if (!ov_settings_init()) {
        ov_message_show_error(ov_error_get());
        ov_error_clear();
        ov_workspace_close();
        return FALSE;
    }
    if (!ov_settings_load(OV_SETTINGS_ALL)) {
        ov_error_clear();
        ov_message_show_warning("Something went wrong when reading your personal settings.");
    }
    return TRUE;
}

void ov_user_session_end()
{
    ov_settings_clean_up();
    ov_workspace_close();
}
