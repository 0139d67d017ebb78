#include "TextSpecimens.h"

#include "UnicodeText.h"

#include <QFont>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <sstream>

namespace tosvar::TextSpecimens {

namespace {

using Kind = Section::Kind;

QFont face(const char* file, int pixelSize) {
    const int id = QFontDatabase::addApplicationFont(QString::fromLatin1(file));
    QFont font(QFontDatabase::applicationFontFamilies(id).value(0));
    font.setPixelSize(pixelSize);
    font.setHintingPreference(QFont::PreferFullHinting);
    return font;
}

std::vector<std::string> cells(const std::string& row) {
    std::vector<std::string> out;
    std::istringstream in(row);
    for (std::string cell; std::getline(in, cell, '|');) out.push_back(cell);
    return out;
}

// A paragraph's words broken into lines no wider than `width`.
std::vector<QString> wrapped(const std::string& text, const QFontMetrics& metrics, int width) {
    std::vector<QString> lines;
    QString line;
    for (const QString& word : QString::fromStdString(text).split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QString candidate = line.isEmpty() ? word : line + QLatin1Char(' ') + word;
        if (!line.isEmpty() && metrics.horizontalAdvance(candidate) > width) {
            lines.push_back(line);
            line = word;
        } else {
            line = candidate;
        }
    }
    if (!line.isEmpty()) lines.push_back(line);
    return lines;
}

std::string collapsed(std::string_view text) {
    std::string out;
    bool blank = false;
    for (const char32_t c : UnicodeText::decode(text)) {
        if (UnicodeText::isWhitespace(c)) {
            blank = !out.empty();
            continue;
        }
        if (blank) out += ' ';
        blank = false;
        out += UnicodeText::encode(std::u32string(1, c));
    }
    return out;
}

const char* const prose[] = {
    "Every morning the harbour office posts the tide table on the board beside the ferry gate, and the first boat leaves "
    "twenty minutes after high water. Passengers with bicycles board at the rear ramp; cars wait in lane three until the "
    "deckhand waves them forward.",
    "The museum opens at ten on weekdays and at nine on Saturdays. Guided tours of the lighthouse gallery start every hour "
    "and last about forty minutes, so visitors who arrive late can still join the next one.",
    "Repairs to the northern pier will close the fishing steps from the fourth of March until the end of April. Anglers "
    "may use the southern wall during that time, where the council has fitted new railings and two benches.",
    "A short walk along the cliff path brings you to the old signal station, which now serves tea, soup and fresh bread "
    "baked in the village each afternoon.",
};

} // namespace

std::vector<Section> document() {
    return {
        {Kind::paragraph,
         {"Before you start, copy the sample files into your project folder and open the settings page. The importer reads "
          "every file once, keeps a checksum of each, and skips the ones that did not change since the last run."}},
        {Kind::code,
         {"def import_files(folder, seen):", "    for path in sorted(folder.glob(\"*.csv\")):", "        digest = checksum(path)",
          "        if seen.get(path) == digest:", "            continue", "        load(path)", "        seen[path] = digest"}},
        {Kind::table, {"Station|Trains|Minutes", "Harbour|12|4", "Market Square|9|7", "Hill Road|6|11"}},
    };
}

std::vector<Section> screenful(QSize size, int pixelSize, int columnWidth) {
    std::vector<Section> sections;
    const QFontMetrics metrics(face("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", pixelSize));
    const int column = columnWidth > 0 ? columnWidth : size.width() - 80;
    int used = 40;
    for (std::size_t i = 0;; ++i) {
        const std::string text = prose[i % std::size(prose)];
        const int height = static_cast<int>(wrapped(text, metrics, column).size()) * metrics.lineSpacing() + pixelSize;
        if (used + height > size.height() - 40) break;
        used += height;
        sections.push_back({Kind::paragraph, {text}});
    }
    return sections;
}

QImage render(const std::vector<Section>& sections, QSize size, int pixelSize, int columnWidth) {
    if (!QGuiApplication::instance()) return {};
    const QFont sans = face("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", pixelSize);
    const QFont mono = face("/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf", pixelSize);
    QImage image(size, QImage::Format_RGBA8888_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setPen(QColor(28, 28, 30));
    const int margin = 40;
    int y = margin;
    for (const Section& section : sections) {
        painter.setFont(section.kind == Kind::code ? mono : sans);
        const QFontMetrics metrics(painter.font());
        std::vector<std::vector<QString>> rows;
        if (section.kind == Kind::paragraph)
            for (const QString& line : wrapped(section.lines.front(), metrics, columnWidth > 0 ? columnWidth : size.width() - 2 * margin))
                rows.push_back({line});
        for (const std::string& line : section.kind == Kind::paragraph ? std::vector<std::string>{} : section.lines) {
            std::vector<QString> row;
            for (const std::string& cell : section.kind == Kind::table ? cells(line) : std::vector<std::string>{line}) row.push_back(QString::fromStdString(cell));
            rows.push_back(row);
        }
        for (const std::vector<QString>& row : rows) {
            y += metrics.lineSpacing();
            for (std::size_t c = 0; c < row.size(); ++c) painter.drawText(margin + static_cast<int>(c) * pixelSize * 12, y, row[c]);
        }
        y += pixelSize;
    }
    return image;
}

std::string truth(const std::vector<Section>& sections) {
    std::string text;
    for (const Section& section : sections)
        for (const std::string& line : section.lines) {
            std::string joined = line;
            if (section.kind == Kind::table) std::replace(joined.begin(), joined.end(), '|', ' ');
            text += joined + "\n";
        }
    return collapsed(text);
}

double characterErrorRate(std::string_view recognized, std::string_view truth) {
    const std::vector<std::u32string> a = UnicodeText::graphemeClusters(UnicodeText::decode(collapsed(recognized)));
    const std::vector<std::u32string> b = UnicodeText::graphemeClusters(UnicodeText::decode(collapsed(truth)));
    if (b.empty()) return a.empty() ? 0 : 1;
    std::vector<std::size_t> previous(b.size() + 1), current(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) previous[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        current[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j)
            current[j] = std::min({previous[j] + 1, current[j - 1] + 1, previous[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
        std::swap(previous, current);
    }
    return static_cast<double>(previous[b.size()]) / static_cast<double>(b.size());
}

} // namespace tosvar::TextSpecimens
