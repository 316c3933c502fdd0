#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/UICmd.h"

// Builds a command from its name (as UICmdName spells it) and its arguments as text. Returns nothing
// and sets error to a sentence if the name is unknown or the arguments don't fit.
std::optional<UICmd> UICmdFromText(std::string const& name, std::vector<std::string> const& arguments,
                                   std::string& error);

// Whether the text names a command that UICmdFromText knows.
bool IsUICmdName(std::string const& name);
