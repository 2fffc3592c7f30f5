#include "app/template_editor_run.h"

#include "app/app_icon.h"
#include "app/editing_window.h"
#include "core/error.h"
#include "core/file_type.h"
#include "core/fs_utils.h"
#include "core/raii.h"
#include "frame/file_dialog.h"
#include "frame/message.h"
#include "frame/user_session.h"
#include "frame/window_stack.h"

namespace
{

void show_error_buffer()
{
    ov_message_show_error(ov_error_get());
    ov_error_clear();
}

} // namespace

void ov_template_editor_run(int argc, char **argv)
{
    gtk_window_set_default_icon_name(ov_app_icon_name);
    ov_window_stack_init();
    if (ov_user_session_start()) {
        ov::GStr path;
        if (argc < 2) {
            path.reset(ov_file_dialog_get_file_path_for_reading("Select a template file to open", nullptr,
                                                                OV_FILE_TYPE_TEMPLATE));
        } else {
            path.reset(ov_fs_utils_convert_osfsenc_to_utf8(argv[1]));
            if (!path)
                show_error_buffer();
        }
        if (path)
            run_editing_window(path.get());
        ov_user_session_end();
    }
    ov_window_stack_clean_up();
}
