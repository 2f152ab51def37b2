#include "desktops/linux/KeyedArchive.h"

#include "desktops/linux/PlistData.h"
#include "desktops/linux/PlistGuard.h"
#include "desktops/linux/Utf8.h"

#include <algorithm>
#include <plist/plist.h>
#include <utility>

namespace rb {

namespace {

struct FreePlist {
    void operator()(void* node) const { plist_free(node); }
};
using Plist = std::unique_ptr<void, FreePlist>;

constexpr const char* null = "$null";
constexpr std::uint64_t archiveVersion = 100'000;
constexpr double secondsTo2001 = 978'307'200; // dates count from then
// More than the product ever stores; what a hostile file could make of the same texts.
constexpr std::size_t mostObjects = 1000;
constexpr std::size_t mostTextBytes = std::size_t{1} << 27U;

bool isStorable(const std::string& text) {
    return isValidUtf8(text) && text.find('\0') == std::string::npos;
}

bool isStorable(const ArchiveObject& object) {
    return std::all_of(object.begin(), object.end(), [](const auto& entry) {
        if (const auto* text = std::get_if<std::string>(&entry.second)) {
            return isStorable(*text);
        }
        const auto* texts = std::get_if<std::vector<std::string>>(&entry.second);
        return !texts || std::all_of(texts->begin(), texts->end(), [](const auto& text) { return isStorable(text); });
    });
}

// Builds the list of objects, with marks in place of data. The first one stands for no object.
class Writer {
public:
    explicit Writer(const ArchiveClass& objectClass)
        : objectClass_(objectClass) {
        plist_array_append_item(objects_, plist_new_string(null));
    }

    plist_t archive(const std::vector<ArchiveObject>& objects) {
        const std::uint64_t root = addArray();
        plist_t elements = plist_new_array();
        for (const ArchiveObject& object : objects) {
            if (isStorable(object)) {
                plist_array_append_item(elements, plist_new_uid(addObject(object)));
            }
        }
        fillArray(root, elements);
        plist_t whole = plist_new_dict();
        plist_dict_set_item(whole, "$version", plist_new_uint(archiveVersion));
        plist_dict_set_item(whole, "$archiver", plist_new_string("NSKeyedArchiver"));
        plist_t top = plist_new_dict();
        plist_dict_set_item(top, "root", plist_new_uid(root));
        plist_dict_set_item(whole, "$top", top);
        plist_dict_set_item(whole, "$objects", objects_);
        return whole;
    }

    // By the numbers of their marks.
    std::vector<SharedBlob> takeData() { return std::move(data_); }

private:
    std::uint64_t add(plist_t object) {
        plist_array_append_item(objects_, object);
        return count_++;
    }
    std::uint64_t addClass(const std::string& name) {
        const auto known = classes_.find(name);
        if (known != classes_.end()) {
            return known->second;
        }
        plist_t described = plist_new_dict();
        plist_dict_set_item(described, "$classname", plist_new_string(name.c_str()));
        plist_t line = plist_new_array();
        plist_array_append_item(line, plist_new_string(name.c_str()));
        plist_array_append_item(line, plist_new_string("NSObject"));
        plist_dict_set_item(described, "$classes", line);
        return classes_[name] = add(described);
    }
    std::uint64_t addArray() {
        arrays_[count_] = plist_new_dict();
        return add(arrays_[count_]);
    }
    void fillArray(std::uint64_t number, plist_t elements) {
        plist_dict_set_item(arrays_[number], "NS.objects", elements);
        plist_dict_set_item(arrays_[number], "$class", plist_new_uid(addClass("NSArray")));
    }
    std::uint64_t addText(const std::string& text) {
        const auto known = texts_.find(text);
        if (known != texts_.end()) {
            return known->second;
        }
        const std::uint64_t number = add(plist_new_string(text.c_str()));
        constexpr std::size_t oftenRepeated = 64; // names of types
        if (text.size() <= oftenRepeated) {
            texts_[text] = number;
        }
        return number;
    }
    std::uint64_t addValue(const ArchiveValue& value) {
        if (const auto* text = std::get_if<std::string>(&value)) {
            return addText(*text);
        }
        if (const auto* data = std::get_if<SharedBlob>(&value); data && *data) {
            const std::string mark = plistMark(data_.size());
            data_.push_back(*data);
            return add(plist_new_data(mark.data(), mark.size()));
        }
        if (const auto* texts = std::get_if<std::vector<std::string>>(&value)) {
            const std::uint64_t number = addArray();
            plist_t elements = plist_new_array();
            for (const std::string& text : *texts) {
                plist_array_append_item(elements, plist_new_uid(addText(text)));
            }
            fillArray(number, elements);
            return number;
        }
        if (const auto* date = std::get_if<ArchiveDate>(&value)) {
            plist_t node = plist_new_dict();
            plist_dict_set_item(node, "NS.time", plist_new_real(date->seconds - secondsTo2001));
            const std::uint64_t number = add(node);
            plist_dict_set_item(node, "$class", plist_new_uid(addClass("NSDate")));
            return number;
        }
        return 0;
    }
    std::uint64_t addObject(const ArchiveObject& object) {
        plist_t node = plist_new_dict();
        const std::uint64_t number = add(node);
        for (const auto& [key, value] : object) {
            const auto* integer = std::get_if<std::int64_t>(&value);
            plist_dict_set_item(node, key.c_str(),
                                integer ? plist_new_uint(static_cast<std::uint64_t>(*integer))
                                        : plist_new_uid(addValue(value)));
        }
        plist_dict_set_item(node, "$class", plist_new_uid(addClass(objectClass_.name)));
        return number;
    }

    const ArchiveClass& objectClass_;
    plist_t objects_ = plist_new_array();
    std::uint64_t count_ = 1;
    std::map<std::string, std::uint64_t> classes_;
    std::map<std::string, std::uint64_t> texts_;
    std::map<std::uint64_t, plist_t> arrays_; // still to be filled
    std::vector<SharedBlob> data_;
};

bool is(plist_t node, plist_type type) {
    return node != nullptr && plist_get_node_type(node) == type;
}

std::optional<std::string> textOf(plist_t node) {
    if (!is(node, PLIST_STRING)) {
        return std::nullopt;
    }
    std::uint64_t length = 0;
    const char* bytes = plist_get_string_ptr(node, &length);
    std::string text(bytes != nullptr ? bytes : "", bytes != nullptr ? length : 0);
    return isValidUtf8(text) ? text : wellFormedUtf8(text);
}

class Reader {
public:
    Reader(const ArchiveClass& objectClass, plist_t archive, const std::vector<SharedBlob>& data)
        : objectClass_(objectClass)
        , archive_(archive)
        , data_(data) {}

    DecodedArchive decode() {
        plist_t objects = is(archive_, PLIST_DICT) ? plist_dict_get_item(archive_, "$objects") : nullptr;
        plist_t top = objects != nullptr ? plist_dict_get_item(archive_, "$top") : nullptr;
        if (!is(objects, PLIST_ARRAY) || !is(top, PLIST_DICT) ||
            textOf(plist_dict_get_item(archive_, "$archiver")) != "NSKeyedArchiver") {
            return {.objects = std::nullopt, .fault = "no keyed archive"};
        }
        objects_ = elementsOf(objects);
        const auto elements = arrayElements(objectAt(plist_dict_get_item(top, "root")));
        if (!elements) {
            return {.objects = std::nullopt, .fault = "an archive of something else"};
        }
        DecodedArchive decoded{.objects = std::vector<ArchiveObject>()};
        for (plist_t element : *elements) {
            auto object = decoded.objects->size() < mostObjects ? objectOf(objectAt(element)) : std::nullopt;
            if (object) {
                decoded.objects->push_back(std::move(*object));
            } else {
                ++decoded.damaged;
            }
        }
        return decoded;
    }

private:
    static std::vector<plist_t> elementsOf(plist_t array) {
        std::vector<plist_t> elements;
        plist_array_iter position = nullptr;
        plist_array_new_iter(array, &position);
        for (plist_t item = nullptr;;) {
            plist_array_next_item(array, position, &item);
            if (item == nullptr) {
                break;
            }
            elements.push_back(item);
        }
        free(position);
        return elements;
    }
    // What a reference leads to; null for nothing and for what is no reference.
    plist_t objectAt(plist_t reference) const {
        if (!is(reference, PLIST_UID)) {
            return nullptr;
        }
        std::uint64_t number = 0;
        plist_get_uid_val(reference, &number);
        return number > 0 && number < objects_.size() ? objects_[number] : nullptr;
    }
    bool isOfClass(plist_t object, const std::string& name) const {
        plist_t described = is(object, PLIST_DICT) ? objectAt(plist_dict_get_item(object, "$class")) : nullptr;
        if (!is(described, PLIST_DICT)) {
            return false;
        }
        plist_t line = plist_dict_get_item(described, "$classes");
        if (!is(line, PLIST_ARRAY)) {
            return textOf(plist_dict_get_item(described, "$classname")) == name;
        }
        const auto names = elementsOf(line);
        return std::any_of(names.begin(), names.end(), [&](plist_t each) { return textOf(each) == name; });
    }
    std::optional<std::vector<plist_t>> arrayElements(plist_t array) const {
        if (!isOfClass(array, "NSArray")) {
            return std::nullopt;
        }
        plist_t elements = plist_dict_get_item(array, "NS.objects");
        return is(elements, PLIST_ARRAY) ? std::optional(elementsOf(elements)) : std::nullopt;
    }
    // Immutable texts and data stand for themselves, mutable ones are wrapped.
    plist_t unwrapped(plist_t object, const char* className, const char* key) const {
        return isOfClass(object, className) ? plist_dict_get_item(object, key) : object;
    }
    std::optional<std::string> string(plist_t object) {
        auto text = textOf(unwrapped(object, "NSString", "NS.string"));
        if (!text) {
            text = textOf(object);
        }
        textBytes_ += text ? text->size() : 0;
        return textBytes_ <= mostTextBytes ? text : std::nullopt;
    }
    // Kept once, however many objects share it.
    std::optional<SharedBlob> data(plist_t object) const {
        plist_t node = unwrapped(object, "NSData", "NS.data");
        if (!is(node, PLIST_DATA)) {
            return std::nullopt;
        }
        std::uint64_t length = 0;
        const char* start = plist_get_data_ptr(node, &length);
        const std::uint64_t number = numberOfMark({start, length});
        return number < data_.size() ? std::optional(data_[number]) : std::nullopt;
    }
    std::optional<std::vector<std::string>> strings(plist_t object) {
        const auto elements = arrayElements(object);
        if (!elements) {
            return std::nullopt;
        }
        std::vector<std::string> texts;
        for (plist_t element : *elements) {
            auto text = string(objectAt(element));
            if (!text) {
                return std::nullopt;
            }
            texts.push_back(std::move(*text));
        }
        return texts;
    }
    std::optional<ArchiveDate> date(plist_t object) const {
        plist_t time = isOfClass(object, "NSDate") ? plist_dict_get_item(object, "NS.time") : nullptr;
        double seconds = 0;
        if (is(time, PLIST_REAL)) {
            plist_get_real_val(time, &seconds);
        } else if (is(time, PLIST_UINT)) {
            std::uint64_t whole = 0;
            plist_get_uint_val(time, &whole);
            seconds = static_cast<double>(static_cast<std::int64_t>(whole));
        } else {
            return std::nullopt;
        }
        constexpr double endOfTime = 1e12; // also keeps out what is no number
        return seconds > -endOfTime && seconds < endOfTime ? std::optional(ArchiveDate{seconds + secondsTo2001})
                                                           : std::nullopt;
    }

    // False when the value is there and of another kind.
    bool addValue(ArchiveObject& object, const std::string& key, ArchiveKind kind, plist_t node) {
        if (node == nullptr) {
            return true;
        }
        if (kind == ArchiveKind::Integer) {
            std::uint64_t value = 0;
            if (!is(node, PLIST_UINT)) {
                return false;
            }
            plist_get_uint_val(node, &value);
            object[key] = static_cast<std::int64_t>(value);
            return true;
        }
        std::uint64_t number = 0;
        if (!is(node, PLIST_UID)) {
            return false;
        }
        plist_get_uid_val(node, &number);
        if (number == 0) {
            return true; // no object
        }
        const auto put = [&](auto value) {
            if (value) {
                object[key] = std::move(*value);
            }
            return value.has_value();
        };
        plist_t target = objectAt(node);
        switch (kind) {
        case ArchiveKind::String:
            return put(string(target));
        case ArchiveKind::Data:
            return put(data(target));
        case ArchiveKind::Strings:
            return put(strings(target));
        case ArchiveKind::Date:
            return put(date(target));
        case ArchiveKind::Integer:
            break;
        }
        return false;
    }
    std::optional<ArchiveObject> objectOf(plist_t node) {
        if (!isOfClass(node, objectClass_.name)) {
            return std::nullopt;
        }
        ArchiveObject object;
        for (const auto& [key, kind] : objectClass_.keys) {
            if (!addValue(object, key, kind, plist_dict_get_item(node, key.c_str()))) {
                return std::nullopt;
            }
        }
        return object;
    }

    const ArchiveClass& objectClass_;
    plist_t archive_;
    std::vector<plist_t> objects_;
    const std::vector<SharedBlob>& data_; // by the numbers of their marks
    std::size_t textBytes_ = 0;
};

} // namespace

EncodedArchive encodeArchive(const ArchiveClass& objectClass, const std::vector<ArchiveObject>& objects) {
    Writer writer(objectClass);
    const Plist archive(writer.archive(objects));
    const std::vector<SharedBlob> data = writer.takeData();
    char* bytes = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(archive.get(), &bytes, &size);
    const std::unique_ptr<char, void (*)(char*)> list(bytes, [](char* memory) { plist_to_bin_free(memory); });
    std::vector<std::uint64_t> sizes;
    sizes.reserve(data.size());
    for (const SharedBlob& each : data) {
        sizes.push_back(each->size());
    }
    DividedPlist divided = withRoomForData({list.get(), size}, sizes);
    EncodedArchive encoded{.texts = std::move(divided.texts), .data = {}};
    encoded.data.reserve(divided.numbers.size());
    for (const std::size_t number : divided.numbers) {
        encoded.data.push_back(data[number]);
    }
    return encoded;
}

DecodedArchive decodeArchive(const ArchiveClass& objectClass, const std::shared_ptr<const ByteStore>& file) {
    MarkedPlist marked = withMarks(*file);
    std::string fault = marked.fault.empty() ? plistFault(marked.list) : std::move(marked.fault);
    if (!fault.empty()) {
        return {.objects = std::nullopt, .fault = std::move(fault)};
    }
    std::vector<SharedBlob> data;
    data.reserve(marked.data.size());
    for (const MarkedPlist::Range& range : marked.data) {
        data.push_back(std::make_shared<const Blob>(Blob::Place{file, range.offset}, range.size));
    }
    plist_t root = nullptr;
    plist_from_bin(marked.list.data(), static_cast<std::uint32_t>(marked.list.size()), &root);
    const Plist archive(root);
    if (!archive) {
        return {.objects = std::nullopt, .fault = "no property list"};
    }
    return Reader(objectClass, archive.get(), data).decode();
}

} // namespace rb
