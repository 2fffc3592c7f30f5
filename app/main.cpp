// Entry point of the template editor and its application configuration.
#include "app/app_icon.h"
#include "app/template_editor_run.h"
#include "frame/startup.h"
#include "widgets/gfx_text.h"

void ov_init_application_configuration(OvApplicationConfiguration *configuration)
{
    configuration->application_id = ov_app_id;
    configuration->run = ov_template_editor_run;
    configuration->reactivate = nullptr;
    configuration->clean_up_text_drawing = ov_gfx_text_clean_up;
}

int main(int argc, char **argv)
{
    return ov_main(argc, argv);
}
