// Declarations only, written from the documented interface: what this program calls and no more.
#pragma once
#define OS_OBJECT_USE_OBJC 0
