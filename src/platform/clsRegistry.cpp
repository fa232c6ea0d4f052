#include "platform/clsRegistry.h"

#include <windows.h>

#include "common/failure.h"
#include "platform/reg_types.h"

namespace corvan {
namespace {

// Handles are pointer-sized but travel as 32-bit numbers; sign extension
// gives back both the predefined roots and the handles the registry hands out.
HKEY KeyFromNumber(int32_t number) { return reinterpret_cast<HKEY>(static_cast<intptr_t>(number)); }
int32_t NumberFromKey(HKEY key) { return static_cast<int32_t>(reinterpret_cast<intptr_t>(key)); }

std::string RootText(int32_t rootKey) { return std::to_string(rootKey); }

}  // namespace

bool clsRegistry::DeleteBranch(int32_t rootKey, const std::string& keyPath, const std::string& subKeyName) {
    // The opened key is not closed: callers have always relied on nothing
    // more than the result, and the handle goes with the process.
    HKEY key = nullptr;
    RegOpenKeyExA(KeyFromNumber(rootKey), keyPath.c_str(), 0, KEY_CREATE_SUB_KEY, &key);
    return RegDeleteKeyA(key, subKeyName.c_str()) == ERROR_SUCCESS;
}

bool clsRegistry::DeleteKey(int32_t rootKey, const std::string& keyPath, const std::string& valueName) {
    HKEY key = nullptr;
    RegOpenKeyExA(KeyFromNumber(rootKey), keyPath.c_str(), 0, KEY_SET_VALUE, &key);
    return RegDeleteValueA(key, valueName.c_str()) == ERROR_SUCCESS;
}

RegVariant clsRegistry::GetRegSetting(int32_t rootKey, const std::string& keyPath, const std::string& valueName,
                                      const RegVariant& defaultValue) {
    HKEY key = nullptr;
    RegOpenKeyExA(KeyFromNumber(rootKey), keyPath.c_str(), 0, KEY_QUERY_VALUE, &key);
    if (!key) return defaultValue;

    // A probe with room for nothing tells whether the value exists, its type
    // and its size in one call.
    BYTE probe[4] = {};
    DWORD type = 0;
    DWORD size = 0;
    const LONG found = RegQueryValueExA(key, valueName.c_str(), nullptr, &type, probe, &size);
    if (found != ERROR_SUCCESS && found != ERROR_MORE_DATA) return defaultValue;
    lastValueType_ = static_cast<int32_t>(type);

    switch (type) {
        case REG_SZ:
        case REG_EXPAND_SZ:
        case REG_MULTI_SZ: {
            // The terminator is not part of the text; a multi-string keeps
            // its inner NULs. An empty value (no terminator stored) is "".
            std::string buffer(size + 1, '\0');
            DWORD read = size;
            RegQueryValueExA(key, valueName.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(buffer.data()), &read);
            std::string text = buffer.substr(0, size ? size - 1 : 0);
            return RegVariant::String(type == REG_EXPAND_SZ ? ExpandEnvStr(text) : text);
        }
        case REG_DWORD:
        case REG_DWORD_BIG_ENDIAN: {
            uint32_t value = 0;
            DWORD read = sizeof value;
            RegQueryValueExA(key, valueName.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(&value), &read);
            const auto number = static_cast<int32_t>(value);
            return RegVariant::Long(type == REG_DWORD ? number : reg::SwapEndian(number));
        }
        default: {
            std::vector<uint8_t> bytes(size + 1, 0);
            DWORD read = size;
            RegQueryValueExA(key, valueName.c_str(), nullptr, nullptr, bytes.data(), &read);
            return RegVariant::Bytes(std::move(bytes));
        }
    }
}

bool clsRegistry::SetRegValue(int32_t rootKey, const std::string& keyPath, const std::string& valueName,
                              const RegVariant& data, const RegVariant& valueType) {
    try {
        HKEY created = nullptr;
        LONG status = RegCreateKeyA(KeyFromNumber(rootKey), keyPath.c_str(), &created);
        if (status != ERROR_SUCCESS) return false;

        const reg::RegWrite plan = reg::PlanRegWrite(data);
        if (plan.status != 0) {
            status = plan.status;
        } else if (plan.write) {
            status = RegSetValueExA(created, valueName.c_str(), 0, static_cast<DWORD>(plan.type), plan.data.data(),
                                    static_cast<DWORD>(plan.data.size()));
        }
        // The root, not the created key, is closed: the wrapper has always
        // behaved so, and closing a predefined root is harmless.
        RegCloseKey(KeyFromNumber(rootKey));
        return status == ERROR_SUCCESS;
    } catch (const Failure& failure) {
        throw reg::WithContext(failure, " - clsRegistry.SetRegValue(",
                               {RootText(rootKey), keyPath, valueName, data.DisplayText()},
                               ",[" + valueType.DisplayText() + "]");
    }
}

int32_t clsRegistry::GetValueType(const RegVariant& data) {
    try {
        return reg::GetValueType(data);
    } catch (const Failure& failure) {
        throw reg::WithContext(failure, " - clsRegistry.GetValueType(", {data.DisplayText()});
    }
}

int32_t clsRegistry::OpenRegKey(int32_t rootKey, const std::string& keyPath) {
    try {
        HKEY key = nullptr;
        if (RegOpenKeyExA(KeyFromNumber(rootKey), keyPath.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return 0;
        return NumberFromKey(key);
    } catch (const Failure& failure) {
        throw reg::WithContext(failure, " - clsRegistry.OpenRegKey(", {RootText(rootKey), keyPath}, ")");
    }
}

void clsRegistry::CloseRegKey(int32_t keyHandle) {
    try {
        RegCloseKey(KeyFromNumber(keyHandle));
    } catch (const Failure& failure) {
        throw reg::WithContext(failure, " - clsRegistry.CloseRegKey(", {std::to_string(keyHandle)});
    }
}

std::string clsRegistry::ExpandEnvStr(const std::string& text) {
    try {
        const DWORD needed = ExpandEnvironmentStringsA(text.c_str(), nullptr, 0);
        if (needed == 0) throw RuntimeError(error::kInvalidProcedureCall, "CorvanInstaller");
        std::string buffer(needed, '\0');
        ExpandEnvironmentStringsA(text.c_str(), buffer.data(), needed);
        buffer.resize(needed - 1);
        return buffer;
    } catch (const Failure& failure) {
        throw reg::WithContext(failure, " - clsRegistry.ExpandEnvStr(", {text});
    }
}

int32_t clsRegistry::SwapEndian(int32_t value) {
    try {
        return reg::SwapEndian(value);
    } catch (const Failure& failure) {
        throw reg::WithContext(failure, " - clsRegistry.SwapEndian(", {std::to_string(value)});
    }
}

}  // namespace corvan
