// The cursors of Glow Horde, kept apart from the catalogue so that code which only reads the catalogue
// (tools, tests) doesn't need the application shell.
#include <string>

#include "app/SDL3App.h"
#include "glow_horde/GlowHordeGame.h"

void GlowHordeGame::oneTimeAppInit(SDL3App& app) {
  struct Base {
    char const* file;
    char const* name;
    char const* prefix;
    bool flip;
  };
  static constexpr Base kBases[] = {
      {"cursor.png", "", "", false},
      {"cursor_left.png", "left", "left_", true},
      {"cursor_right.png", "right", "right_", false},
  };
  struct Icon {
    char const* file;
    char const* word;
  };
  static constexpr Icon kIcons[] = {
      {"blocked_icon.png", "blocked"}, {"falling_icon.png", "falling"}, {"turned_icon.png", "turned"}};

  for (Base const& base : kBases) {
    app.loadCursor(base.file, Position{0, 0}, base.name);
  }
  for (Base const& base : kBases) {
    for (Icon const& icon : kIcons) {
      std::string const name = std::string(base.prefix) + icon.word;
      app.loadCompositeCursor(base.file, icon.file, Position{0, 0}, name.c_str(), base.flip);
    }
  }
  app.setCursor("");
}
