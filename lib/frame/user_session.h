// The user's session: the workspace opened (or created through the
// assistant) and the personal settings loaded.
#pragma once

#include <glib.h>

// Opens the workspace, creating it through the assistant when there is none,
// then loads the settings (a file that cannot be read gives a warning and the
// defaults). FALSE when there is no workspace; the user has been told.
gboolean ov_user_session_start();
// Cleans up the settings and closes the workspace.
void ov_user_session_end();
