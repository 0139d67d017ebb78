#pragma once

#include <QImage>
#include <QSize>

#include <string>
#include <string_view>
#include <vector>

namespace tosvar {

// Text set on a page as a screen shows it, with the words it holds, for
// measuring how well a capture reads them back.
namespace TextSpecimens {

struct Section {
    enum class Kind { paragraph, code, table };
    Kind kind = Kind::paragraph;
    // A paragraph's text (wrapped to the page), a code block's lines, or a
    // table's rows with cells split by '|'.
    std::vector<std::string> lines;
};

// A paragraph, a code block and a small table.
std::vector<Section> document();
// Paragraphs enough to fill a page of `size` at `pixelSize`, set in a column
// `columnWidth` wide (the page's width less its margins when 0).
std::vector<Section> screenful(QSize size, int pixelSize, int columnWidth = 0);
// The sections drawn dark on white: DejaVu Sans for prose and tables,
// DejaVu Sans Mono for code, at `pixelSize`, one pixel per point, in a
// column `columnWidth` wide from the left margin (the page less its margins when 0).
QImage render(const std::vector<Section>& sections, QSize size, int pixelSize, int columnWidth = 0);
// The words of the sections in reading order, a table row by row.
std::string truth(const std::vector<Section>& sections);

// Edit distance between the texts, over user-perceived characters, divided
// by the truth's length; runs of whitespace count as one blank on both sides.
double characterErrorRate(std::string_view recognized, std::string_view truth);

} // namespace TextSpecimens

} // namespace tosvar
