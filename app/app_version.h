// The program's name and version as the windows show them.
#pragma once

extern const char *const ov_app_name;
extern const char *const ov_app_version;
