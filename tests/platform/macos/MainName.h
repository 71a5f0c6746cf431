#pragma once

/// Included before main.mm: renames its main, so that tests can call it next to their own main.
int main() __asm__("hushboxMain");
