#include "desktops/linux/ThunarActions.h"

#include <QByteArray>
#include <QString>
#include <QXmlStreamReader>

#include <utility>

namespace rb {

namespace {

constexpr const char* idPrefix = "rookbay-new-text-";
constexpr std::string_view closing = "</actions>";

QString decoded(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// Reads the whole file; `found` is told of each action's id and its place, in characters of the decoded text.
template <typename Found>
bool readActions(const QString& text, const Found& found) {
    QXmlStreamReader reader(text);
    qint64 start = 0;
    QString id;
    int depth = 0;
    bool isFile = false;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            ++depth;
            if (depth == 1) {
                isFile = reader.name() == QLatin1String("actions");
            } else if (depth == 2 && reader.name() == QLatin1String("action")) {
                // The reader may have looked one sign ahead.
                start = text.lastIndexOf(QLatin1String("<action"), reader.characterOffset() - 1);
                id.clear();
            } else if (depth == 3 && reader.name() == QLatin1String("unique-id")) {
                id = reader.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
                --depth;
            }
            break;
        case QXmlStreamReader::EndElement:
            if (depth == 2) {
                const qint64 end = text.lastIndexOf(QLatin1String("</action"), reader.characterOffset() - 1);
                found(id, start, text.indexOf(QLatin1Char('>'), end) + 1);
            }
            --depth;
            break;
        case QXmlStreamReader::DTD: // Thunar's own file for all users has one, without entities
            if (!reader.entityDeclarations().isEmpty()) {
                return false;
            }
            break;
        default:
            break;
        }
    }
    return isFile && !reader.hasError();
}

std::string escaped(const std::string& text) {
    return QString::fromStdString(text).toHtmlEscaped().toStdString();
}

} // namespace

std::optional<ThunarAction> findThunarAction(std::string_view text) {
    const QString document = decoded(text);
    std::optional<ThunarAction> ours;
    const bool valid = readActions(document, [&](const QString& id, qint64 start, qint64 end) {
        if (!ours && id.startsWith(QLatin1String(idPrefix))) {
            const auto bytes = [&](qint64 characters) {
                return static_cast<std::size_t>(document.left(characters).toUtf8().size());
            };
            ours = {.version = id.mid(static_cast<qsizetype>(std::string_view(idPrefix).size())).toStdString(),
                    .start = bytes(start),
                    .end = bytes(end)};
        }
    });
    return valid ? ours : std::nullopt;
}

bool isThunarActionFile(std::string_view text) {
    return readActions(decoded(text), [](const QString&, qint64, qint64) {});
}

std::optional<std::string> withThunarAction(std::string_view text, const std::string& version,
                                            const std::string& command) {
    const std::size_t end = text.rfind(closing);
    if (end == std::string_view::npos || !isThunarActionFile(text)) {
        return std::nullopt;
    }
    std::string result(text.substr(0, end));
    result += "<action>\n"
              "\t<icon>rookbay</icon>\n"
              "\t<name>新建 TXT（Rook Bay）</name>\n"
              "\t<submenu></submenu>\n"
              "\t<unique-id>" +
              escaped(idPrefix + version) +
              "</unique-id>\n"
              "\t<command>" +
              escaped(command) +
              " %f</command>\n"
              "\t<description>在这个文件夹中新建一个空的 TXT 文件</description>\n"
              "\t<range></range>\n"
              "\t<patterns>*</patterns>\n"
              "\t<directories/>\n"
              "</action>\n";
    result += text.substr(end);
    return result;
}

std::string withoutThunarAction(std::string_view text) {
    const auto ours = findThunarAction(text);
    if (!ours) {
        return std::string(text);
    }
    std::string result(text);
    std::size_t end = ours->end;
    if (end < result.size() && result[end] == '\n') {
        ++end;
    }
    return result.erase(ours->start, end - ours->start);
}

} // namespace rb
