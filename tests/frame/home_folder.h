// Points the home and configuration folders at a fresh temporary folder for
// the life of the object, in this process, and puts them back afterwards.
#pragma once

#include "frame/frame_test_support.h"

#include <glib.h>

#include <string>

namespace ov::test
{

class HomeFolder
{
  public:
    HomeFolder()
        : old_home_(g_getenv("HOME") != nullptr ? g_getenv("HOME") : ""),
          old_config_(g_get_user_config_dir()), home_(dir_.file("home")), config_(dir_.file("config"))
    {
        make_folder(home_);
        point_at(home_, config_);
    }
    ~HomeFolder() { point_at(old_home_, old_config_); }
    HomeFolder(const HomeFolder &) = delete;
    HomeFolder &operator=(const HomeFolder &) = delete;

    const std::string &home() const { return home_; }
    const std::string &config() const { return config_; }
    std::string file(const char *name) const { return dir_.file(name); }
    std::string pointer_file() const { return config_ + "/orvane/orvane.xml"; }

  private:
    static void point_at(const std::string &home, const std::string &config)
    {
        g_setenv("HOME", home.c_str(), TRUE);
        g_setenv("XDG_CONFIG_HOME", config.c_str(), TRUE);
        g_set_user_dirs("HOME", home.c_str(), "XDG_CONFIG_HOME", config.c_str(), nullptr);
    }

    TempDir dir_;
    std::string old_home_, old_config_, home_, config_;
};

} // namespace ov::test
