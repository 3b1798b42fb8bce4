#include "tavrolin/core/push_preferences.h"

#include <vector>

#include "tavrolin/platform/platform.h"

namespace tavrolin {

using foundation::Value;

CVNPushPreferences& CVNPushPreferences::sharedInstance() {
    static auto* instance = new CVNPushPreferences;
    return *instance;
}

std::shared_ptr<platform::PreferencesSuite> CVNPushPreferences::sharedUserDefault() {
    const std::lock_guard lock(mutex_);
    if (suite_ == nullptr) {
        auto standard = platform::current().preferences->standard();
        if (standard) {
            suite_ = *standard;
        } else {
            log(LogLevel::error, "-[CVNPushPreferences sharedUserDefault]",
                formatMessage("Could not open the standard preferences due to error: %@",
                              {standard.error().description()}));
        }
    }
    return suite_;
}

void CVNPushPreferences::setSharedUserDefault(std::shared_ptr<platform::PreferencesSuite> suite) {
    const std::lock_guard lock(mutex_);
    suite_ = std::move(suite);
}

void CVNPushPreferences::setSuitName(const Value& name) {
    static constexpr std::string_view kOperation = "-[CVNPushPreferences setSuitName:]";
    if (name.length() == 0) {
        // Always as of line 37, which those who read logs look for.
        CVNPushLogger::print("CVNPushPreferences", static_cast<int>(LogLevel::warn), kOperation, 37,
                             "Corvalen doesn't have app group name");
        return;
    }
    auto suite = platform::current().preferences->suite(name.string());
    if (!suite) {
        log(LogLevel::error, kOperation,
            formatMessage("Could not open the preferences suite %@ due to error: %@",
                          {name, suite.error().description()}));
        return;
    }
    setSharedUserDefault(*suite);
}

std::string CVNPushPreferences::getPreferenceKey(std::string_view key) const {
    std::string result;
    result.reserve(3 + key.size());
    return result.append("CVN").append(key);
}

// --- Writing ----------------------------------------------------------------------------------

void CVNPushPreferences::store(std::string_view key, const Value& value,
                               std::string_view operation) {
    foundation::Failure failure;
    if (const auto suite = sharedUserDefault()) {
        failure = suite->set(getPreferenceKey(key), value);
        if (!failure) return;
    }
    log(LogLevel::error, operation,
        formatMessage("Could not store the preference %@ due to error: %@",
                      {key, failure ? failure->description() : "no preferences are open"}));
}

void CVNPushPreferences::putString(const Value& string, std::string_view forKey) {
    store(forKey, string, "-[CVNPushPreferences putString:forKey:]");
}

void CVNPushPreferences::setObject(const Value& object, std::string_view forKey) {
    store(forKey, object, "-[CVNPushPreferences setObject:forKey:]");
}

void CVNPushPreferences::setDate(const Value& date, std::string_view forKey) {
    store(forKey, date, "-[CVNPushPreferences setDate:forKey:]");
}

void CVNPushPreferences::setBoolean(bool boolean, std::string_view forKey) {
    store(forKey, boolean, "-[CVNPushPreferences setBoolean:forKey:]");
}

namespace {

constexpr std::string_view kSetCustomObject = "-[CVNPushPreferences setCustomObject:forKey:]";
constexpr std::string_view kNotArchived = "Could not archive the object due to exception: %@";

}  // namespace

void CVNPushPreferences::setCustomObject(const Value& object, std::string_view forKey) {
    Value archive;
    const bool archived = guard(kSetCustomObject, kNotArchived, [&] {
        if (object) archive = Value::data(foundation::KeyedArchiver::archivedData(object));
    });
    if (archived) store(forKey, archive, kSetCustomObject);
}

void CVNPushPreferences::setCustomObject(const foundation::Archivable& object,
                                         std::string_view forKey) {
    Value archive;
    const bool archived = guard(kSetCustomObject, kNotArchived, [&] {
        archive = Value::data(foundation::KeyedArchiver::archivedData(object, false));
    });
    if (archived) store(forKey, archive, kSetCustomObject);
}

void CVNPushPreferences::removeObjectForKey(std::string_view key) {
    store(key, {}, "-[CVNPushPreferences removeObjectForKey:]");
}

// --- Reading ----------------------------------------------------------------------------------

Value CVNPushPreferences::getObjectForKey(std::string_view key) {
    const auto suite = sharedUserDefault();
    return suite == nullptr ? Value() : suite->get(getPreferenceKey(key));
}

Value CVNPushPreferences::getStringForKey(std::string_view key) {
    Value stored = getObjectForKey(key);
    return stored.isString() ? stored : Value();
}

Value CVNPushPreferences::getDateForKey(std::string_view key) {
    Value stored = getObjectForKey(key);
    return stored.kind() == Value::Kind::date ? stored : Value();
}

bool CVNPushPreferences::getBooleanForKey(std::string_view key) {
    const Value stored = getObjectForKey(key);
    return stored.isNumber() && stored.boolValue();
}

Value CVNPushPreferences::getCustomObjectForKey(std::string_view key) {
    Value result;
    unarchive(key, [&](Value::Bytes bytes) {
        result = foundation::KeyedUnarchiver::unarchiveValue(bytes);
    });
    return result;
}

Value CVNPushPreferences::getAllStoredPreferences() {
    const auto suite = sharedInstance().sharedUserDefault();
    return suite == nullptr ? Value::dictionary() : suite->dictionaryRepresentation();
}

}  // namespace tavrolin
