#include "desktops/linux/ScreenshotPrograms.h"

#include <gio/gio.h>
#include <memory>
#include <utility>

namespace rb {

namespace {

struct Release {
    void operator()(GSettings* settings) const { g_object_unref(settings); }
    void operator()(GSettingsSchema* schema) const { g_settings_schema_unref(schema); }
    void operator()(GVariant* value) const { g_variant_unref(value); }
};
template <typename Type>
using Owned = std::unique_ptr<Type, Release>;

// Null when the schema or the key isn't installed; asking for one of those would end the process.
Owned<GSettings> settingsOf(const std::string& schema, const std::string& key) {
    GSettingsSchemaSource* source = g_settings_schema_source_get_default();
    if (source == nullptr) {
        return nullptr;
    }
    const Owned<GSettingsSchema> found(g_settings_schema_source_lookup(source, schema.c_str(), TRUE));
    if (!found || g_settings_schema_has_key(found.get(), key.c_str()) == FALSE) {
        return nullptr;
    }
    return Owned<GSettings>(g_settings_new_full(found.get(), nullptr, nullptr));
}

} // namespace

GSettingsScreenshotProgram::GSettingsScreenshotProgram(std::string command, std::string schema, std::string key)
    : command_(std::move(command))
    , schema_(std::move(schema))
    , key_(std::move(key)) {}

bool GSettingsScreenshotProgram::isInstalled() const {
    return settingsOf(schema_, key_) != nullptr;
}

ScreenshotProgram::Reading GSettingsScreenshotProgram::read() const {
    const auto settings = settingsOf(schema_, key_);
    if (!settings) {
        return {};
    }
    const Owned<GVariant> value(g_settings_get_user_value(settings.get(), key_.c_str()));
    if (!value) {
        return {.readable = true, .state = std::nullopt};
    }
    if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING) == FALSE) {
        return {};
    }
    return {.readable = true, .state = g_variant_get_string(value.get(), nullptr)};
}

bool GSettingsScreenshotProgram::write(const State& state) {
    const auto settings = settingsOf(schema_, key_);
    if (!settings || g_settings_is_writable(settings.get(), key_.c_str()) == FALSE) {
        return false;
    }
    if (state) {
        if (g_settings_set_string(settings.get(), key_.c_str(), state->c_str()) == FALSE) {
            return false;
        }
    } else {
        g_settings_reset(settings.get(), key_.c_str());
    }
    g_settings_sync();
    return true;
}

ScreenshotProgram::State GSettingsScreenshotProgram::redirected(const State&, const std::string& folder) const {
    return folder;
}

ScreenshotProgram::State GSettingsScreenshotProgram::undone(const State& current, const State& before,
                                                            const State& after) const {
    return current == after ? before : current;
}

} // namespace rb
