#ifndef TESTS_SUPPORT_RESTRICTEDPROCESS_H_
#define TESTS_SUPPORT_RESTRICTEDPROCESS_H_

/// A primary token like that of this process, in which the Administrators group is not enabled: as
/// an administrator has it who is not elevated. The caller closes it. \returns null on failure.
void* TokenWithoutAdministrators();

#endif  // TESTS_SUPPORT_RESTRICTEDPROCESS_H_
