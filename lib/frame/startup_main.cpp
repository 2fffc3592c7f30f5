// The program's entry and the application object's signal handlers. Kept
// apart from the start-up state because it calls the tool's own
// ov_init_application_configuration.
#include "core/error.h"
#include "frame/message.h"
#include "frame/startup.h"
#include "lang/active_locale.h"
#include "lang/system_locale.h"

namespace
{

// The application object handles its own command line and never forwards a
// start to a running instance.
constexpr GApplicationFlags application_flags =
    GApplicationFlags(G_APPLICATION_HANDLES_COMMAND_LINE | G_APPLICATION_NON_UNIQUE);

int process_argc = 0;
char **process_argv = nullptr;
gboolean running = FALSE;
OvApplicationConfiguration configuration;

void on_activate(GApplication *application, gpointer data)
{
    auto *config = static_cast<OvApplicationConfiguration *>(data);
    if (!ov_startup_is_successful()) {
        ov_error_append("Startup failed.");
        ov_message_show_error(ov_error_get());
        ov_error_clear();
        return;
    }
    if (!running) {
        running = TRUE;
        // Every window runs inside this call; when it returns, no window is
        // left and the application ends.
        config->run(process_argc, process_argv);
        return;
    }
    if (config->reactivate != nullptr)
        config->reactivate(GTK_APPLICATION(application), config);
}

int on_command_line(GApplication *application, GApplicationCommandLine *, gpointer)
{
    g_application_activate(application);
    return 0;
}

void on_shutdown(GApplication *, gpointer data)
{
    ov_startup_release(static_cast<OvApplicationConfiguration *>(data));
}

void on_startup(GApplication *, gpointer)
{
    // A failure stays in the error buffer for "activate" to show.
    ov_startup_prepare();
}

} // namespace

int ov_main(int argc, char **argv)
{
    process_argc = argc;
    process_argv = argv;

    const OvLocale *system_locale = ov_platform_get_system_locale();
    if (system_locale == nullptr)
        system_locale = ov_locale_get_uk_english();
    ov_error_clear();
    ov_ovinternal_set_system_locale(system_locale);
    ov_ovinternal_set_active_locale(system_locale);

    // The look is fixed whatever the user's desktop theme.
    g_setenv("GTK_THEME", "Adwaita", TRUE);

    ov_init_application_configuration(&configuration);
    GtkApplication *application = gtk_application_new(configuration.application_id, application_flags);
    g_signal_connect(application, "activate", G_CALLBACK(on_activate), &configuration);
    g_signal_connect(application, "command-line", G_CALLBACK(on_command_line), nullptr);
    g_signal_connect(application, "shutdown", G_CALLBACK(on_shutdown), &configuration);
    g_signal_connect(application, "startup", G_CALLBACK(on_startup), &configuration);
    // The arguments are the tool's alone: GIO never sees (or rejects) them.
    const int status = g_application_run(G_APPLICATION(application), 0, nullptr);
    g_object_unref(application);
    return status;
}
