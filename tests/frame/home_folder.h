// Points the home and configuration folders at a fresh temporary folder for
// the life of the object, in this process, and puts them back afterwards.
#pragma once

#include "frame/frame_test_support.h"

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
        point_home_at(home_, config_);
    }
    ~HomeFolder() { point_home_at(old_home_, old_config_); }
    HomeFolder(const HomeFolder &) = delete;
    HomeFolder &operator=(const HomeFolder &) = delete;

    const std::string &home() const { return home_; }
    std::string file(const char *name) const { return dir_.file(name); }

  private:
    TempDir dir_;
    std::string old_home_, old_config_, home_, config_;
};

} // namespace ov::test
