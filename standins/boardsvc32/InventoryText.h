#ifndef STANDINS_BOARDSVC32_INVENTORYTEXT_H_
#define STANDINS_BOARDSVC32_INVENTORYTEXT_H_

#include "standins/script/SectionText.h"

/// An inventory is written as the scripts of the other stand-ins are.
namespace boardsim {

using InventoryError = standin::ScriptError;
using InventoryEntry = standin::ScriptEntry;
using InventorySection = standin::ScriptSection;

using standin::EqualIgnoringCase;
using standin::Quote;
using standin::ReadNumber;
using standin::TrimBlanks;

}  // namespace boardsim

#endif  // STANDINS_BOARDSVC32_INVENTORYTEXT_H_
