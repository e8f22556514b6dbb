#ifndef ZEF_LOCATE3_ITEM_H
#define ZEF_LOCATE3_ITEM_H

#include "tarn_tools/Box.h"

namespace TARN_LOCATE3
{
using TARN_ZEF::Box;

// An object of the caller's with its box.
struct Item
{
    void* pObject;
    Box box;
};

} // namespace TARN_LOCATE3

#endif
