#pragma once

#include <string>

/// @return markup escaped for a text
std::string Escaped(const std::string& markup);
