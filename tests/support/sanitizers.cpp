// What the sanitizers are to pass over.

// GLib, which the player and the typesetter bring along, keeps tables for good and remembers only a
// place inside them; Fontconfig loses the patterns of a configuration that it parses, and Cairo a
// copy of each group in an SVG.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions();
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libglib-2.0.so\n"
           "leak:libfontconfig.so\n"
           "leak:libcairo.so\n";
}

// GLib locks in a way that the thread sanitizer doesn't see, so whatever GStreamer and Pango hand
// from thread to thread looks like a race, and so does what the player takes from there.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" const char* __tsan_default_suppressions();
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" const char* __tsan_default_suppressions() {
    return "race:libgst\n"
           "race:libglib-2.0.so\n"
           "race:libgobject-2.0.so\n"
           "race:libpango\n"
           "race:libharfbuzz.so\n"
           "race:libfontconfig.so\n"
           "race:tavrolin::adapters::player::Film::Pipeline::settle\n"
           "deadlock:libgst\n";
}
