#include "helpers/update/Appcast.h"

#include <QByteArray>
#include <QString>
#include <QXmlStreamReader>

#include <utility>

namespace rb {

namespace {

constexpr std::size_t mostItems = 1000;
constexpr qsizetype longestText = 65536; // characters of one element
constexpr int deepest = 32;
constexpr const char* updatesNamespace = "http://www.andymatuschak.org/xml-namespaces/sparkle";

// Reads one feed from top to bottom; `error_` is set by what ends it early.
class Reader {
public:
    explicit Reader(std::string_view text)
        : xml_(QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()))) {}

    std::optional<Appcast> read(std::string& error) {
        bool isFeed = false;
        while (error_.empty() && next()) {
            if (xml_.isStartElement()) {
                if (depth_ == 1) {
                    isFeed = xml_.name() == QLatin1String("rss");
                    if (!isFeed) {
                        fail("it is no RSS feed");
                    }
                } else if (depth_ == 3 && isPlain("item")) {
                    readItem();
                }
            }
        }
        if (error_.empty() && xml_.hasError()) {
            fail(xml_.errorString().toStdString());
        }
        if (error_.empty() && !isFeed) {
            fail("it is empty");
        }
        if (!error_.empty()) {
            error = error_;
            return std::nullopt;
        }
        return std::move(appcast_);
    }

private:
    void fail(const std::string& reason) {
        if (error_.empty()) {
            error_ = reason;
        }
    }

    // One token on; false at the end. Keeps the depth of the element it stands in.
    bool next() {
        if (xml_.isEndElement()) {
            --depth_;
        }
        if (xml_.atEnd()) {
            return false;
        }
        switch (xml_.readNext()) {
        case QXmlStreamReader::StartElement:
            if (++depth_ > deepest) {
                fail("it is nested too deeply");
            }
            break;
        case QXmlStreamReader::DTD:
        case QXmlStreamReader::EntityReference:
            fail("it has a document type of its own");
            break;
        default:
            break;
        }
        return error_.empty();
    }

    bool isPlain(const char* name) const {
        return xml_.namespaceUri().isEmpty() && xml_.name() == QLatin1String(name);
    }
    bool isOfUpdates(const char* name) const {
        return xml_.namespaceUri() == QLatin1String(updatesNamespace) && xml_.name() == QLatin1String(name);
    }

    // The text of the element that has just begun, up to its end.
    std::string readText() {
        QString text;
        const int inside = depth_;
        while (next()) {
            if (xml_.isEndElement() && depth_ == inside) {
                break;
            }
            if (xml_.isCharacters()) {
                text += xml_.text();
                if (text.size() > longestText) {
                    fail("one of its texts is too long");
                }
            }
        }
        return text.trimmed().toStdString();
    }

    void readItem() {
        AppcastItem item;
        std::vector<AppcastItem> enclosures;
        const int inside = depth_;
        while (next()) {
            if (xml_.isEndElement() && depth_ == inside) {
                break;
            }
            if (!xml_.isStartElement() || depth_ != inside + 1) {
                continue;
            }
            if (isPlain("description")) {
                item.notes = readText();
            } else if (isOfUpdates("version")) {
                item.version = readText();
            } else if (isOfUpdates("shortVersionString")) {
                item.shownVersion = readText();
            } else if (isPlain("enclosure") && enclosures.size() < mostItems) {
                enclosures.push_back(readEnclosure());
            }
        }
        for (AppcastItem& enclosure : enclosures) {
            add(item, std::move(enclosure));
        }
    }

    AppcastItem readEnclosure() const {
        const QXmlStreamAttributes attributes = xml_.attributes();
        const auto plain = [&](const char* name) { return attributes.value(QLatin1String(name)).toString().toStdString(); };
        const auto ofUpdates = [&](const char* name) {
            return attributes.value(QLatin1String(updatesNamespace), QLatin1String(name)).toString().toStdString();
        };
        AppcastItem item{.version = ofUpdates("version"),
                         .shownVersion = ofUpdates("shortVersionString"),
                         .url = plain("url"),
                         .signature = ofUpdates("edSignature"),
                         .system = ofUpdates("os")};
        bool isNumber = false;
        const std::uint64_t length = attributes.value(QLatin1String("length")).toULongLong(&isNumber);
        if (isNumber && length > 0) {
            item.length = length;
        }
        return item;
    }

    // What the item says for all its packages holds where a package says nothing itself.
    void add(const AppcastItem& common, AppcastItem item) {
        if (item.version.empty()) {
            item.version = common.version;
        }
        if (item.shownVersion.empty()) {
            item.shownVersion = common.shownVersion.empty() ? item.version : common.shownVersion;
        }
        item.notes = common.notes;
        const bool isForLinux = item.system == "linux" || item.system.starts_with("linux-");
        if (!isForLinux || item.version.empty() || item.url.empty()) {
            return;
        }
        if (appcast_.items.size() == mostItems) {
            fail("it has too many items");
            return;
        }
        appcast_.items.push_back(std::move(item));
    }

    QXmlStreamReader xml_;
    int depth_ = 0;
    std::string error_;
    Appcast appcast_;
};

} // namespace

std::optional<Appcast> parseAppcast(std::string_view xml, std::string& error) {
    return Reader(xml).read(error);
}

} // namespace rb
