// How the desktop knows the program. The application identifier also names
// its desktop entry, its AppStream metainfo and its icon in the icon theme.
#pragma once

inline constexpr const char *ov_app_id = "org.orvane.TemplateEditor";
inline constexpr const char *ov_app_icon_name = ov_app_id;
