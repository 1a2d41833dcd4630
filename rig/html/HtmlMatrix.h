#pragma once

#include <cstddef>
#include <functional>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "rig/result/Result.h"

namespace rig::html {

/// Adds a table of letters, or several below each other, so that each fits a page, and what the letters mean.
/// @param corner what the rows are. @param columns their heads. @param fill adds to a cell its letter, if it
/// has one
void AddMatrix(pugi::xml_node parent, std::string_view caption, const char* corner,
               const std::vector<std::string>& rows, const std::vector<std::string>& columns,
               const std::function<void(pugi::xml_node cell, std::size_t row, std::size_t column)>& fill);

/// What one run, or one case, found.
struct MatrixColumn {
    std::string head;
    const std::vector<result::CheckResult>* checks = nullptr;
    std::string target;           // where its letters lead
    bool isCheckAppended = true;  // to the target, which ends as the checks' anchors begin
};

/// Adds the matrix of what each found of each check.
void AddCheckMatrix(pugi::xml_node parent, std::string_view caption,
                    const std::vector<MatrixColumn>& columns);

}  // namespace rig::html
