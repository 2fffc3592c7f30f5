#include "app/app_version.h"

const char *const ov_app_name = "Orvane Template Editor";
const char *const ov_app_version = "3.3.0";
