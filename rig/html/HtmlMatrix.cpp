#include "rig/html/HtmlMatrix.h"

#include <algorithm>

#include "rig/base/Elements.h"
#include "rig/html/HtmlOutcome.h"
#include "rig/html/HtmlTable.h"

namespace rig::html {
namespace {

constexpr std::size_t kColumns = 30;  // as many letters as fit beside the longest check's name

/// @return the checks of all columns, in order of first appearance
std::vector<std::string> IdsIn(const std::vector<MatrixColumn>& columns) {
    std::vector<std::string> ids;
    for (const MatrixColumn& column : columns) {
        for (const result::CheckResult& check : *column.checks) {
            if (std::find(ids.begin(), ids.end(), check.id) == ids.end()) {
                ids.emplace_back(check.id);
            }
        }
    }
    return ids;
}

void AddLetterOf(pugi::xml_node cell, const MatrixColumn& column, const std::string& id) {
    const auto check = std::find_if(column.checks->begin(), column.checks->end(),
                                    [&id](const result::CheckResult& one) { return one.id == id; });
    if (check != column.checks->end()) {
        AddLetter(cell, result::NameOf(check->verdict), column.target + (column.isCheckAppended ? id : ""));
    }
}

}  // namespace

void AddMatrix(pugi::xml_node parent, std::string_view caption, const char* corner,
               const std::vector<std::string>& rows, const std::vector<std::string>& columns,
               const std::function<void(pugi::xml_node, std::size_t, std::size_t)>& fill) {
    Tally letters;
    for (std::size_t first = 0; first == 0 || first < columns.size(); first += kColumns) {
        const std::size_t last = std::min(columns.size(), first + kColumns);
        std::vector<std::string> heads = {corner};
        heads.insert(heads.end(), columns.data() + first, columns.data() + last);
        pugi::xml_node body = AddTable(parent, caption, heads);
        Set(body.parent(), "class", "matrix");
        for (std::size_t row = 0; row < rows.size(); ++row) {
            pugi::xml_node line = Add(body, "tr");
            AddRowHead(line, rows[row]);
            for (std::size_t column = first; column < last; ++column) {
                pugi::xml_node cell = Add(line, "td");
                fill(cell, row, column);
                ++letters[cell.child("a").attribute("title").value()];
            }
        }
    }
    Add(parent, "p", LetterLegend(letters), "hint");
}

void AddCheckMatrix(pugi::xml_node parent, std::string_view caption,
                    const std::vector<MatrixColumn>& columns) {
    const std::vector<std::string> ids = IdsIn(columns);
    std::vector<std::string> heads;
    heads.reserve(columns.size());
    for (const MatrixColumn& column : columns) {
        heads.push_back(column.head);
    }
    AddMatrix(parent, caption, "Check", ids, heads,
              [&](pugi::xml_node cell, std::size_t row, std::size_t column) {
                  AddLetterOf(cell, columns[column], ids[row]);
              });
}

}  // namespace rig::html
