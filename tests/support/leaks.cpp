// What the leak sanitizer is to pass over: GLib, which the player and the typesetter bring along,
// keeps tables for good and remembers only a place inside them; Fontconfig loses the patterns of a
// configuration that it parses, and Cairo a copy of each group in an SVG.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions();
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libglib-2.0.so\nleak:libfontconfig.so\nleak:libcairo.so\n";
}
