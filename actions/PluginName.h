#ifndef ACTIONS_PLUGINNAME_H_
#define ACTIONS_PLUGINNAME_H_

/// What a device's registry value names: "DllName,FunctionName".
struct PluginName {
  const char* library;
  const char* function;
};

/// Splits the value in place at its first comma. Without one the whole value is the library and the
/// function's name is empty, so its look-up fails with a code of its own.
PluginName SplitPluginName(char* value);

/// A library's name may not hold a backslash. Others that lead out of a directory are not looked
/// at.
bool IsPlainFileName(const char* library);

#endif  // ACTIONS_PLUGINNAME_H_
