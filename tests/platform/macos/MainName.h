#pragma once

/// Included ahead of the program's own main file, so that tests can call it beside their main.
int main() __asm__("hushboxMain");
