#ifndef TESTS_FAKES_FAKEMACHINESETTING_H_
#define TESTS_FAKES_FAKEMACHINESETTING_H_

#include <cstdint>
#include <string>

#include "platform/MachineSetting.h"

/// The administrator's settings in memory, behind platform/MachineSetting.h.
namespace fake_machine_setting {

/// No settings.
void Reset();
void SetText(const std::string& name, const std::string& text);
void SetNumber(const std::string& name, std::uint32_t number);

}  // namespace fake_machine_setting

#endif  // TESTS_FAKES_FAKEMACHINESETTING_H_
