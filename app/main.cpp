// Entry point of the template editor and its application configuration.
#include "app/template_editor_run.h"
#include "frame/startup.h"

void ov_init_application_configuration(OvApplicationConfiguration *configuration)
{
    configuration->application_id = "org.orvane.TemplateEditor";
    configuration->run = ov_template_editor_run;
    configuration->reactivate = nullptr;
    configuration->clean_up_text_drawing = nullptr;
}

int main(int argc, char **argv)
{
    return ov_main(argc, argv);
}
