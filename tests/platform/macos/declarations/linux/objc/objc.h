// Declarations only, written from the documented interface: what this program calls and no more.
#pragma once
typedef struct objc_class* Class;
typedef struct objc_selector* SEL;
#ifdef DECLARED_BOOL_IS_BOOL
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif
#ifdef DECLARED_BOOL_IS_BOOL
#define YES __objc_yes
#define NO __objc_no
#else
#define YES __objc_yes
#define NO __objc_no
#endif
#define nil nullptr
#define Nil nullptr
typedef long NSInteger;
typedef unsigned long NSUInteger;
