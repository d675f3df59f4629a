// What a sanitizer finds ends the program with a failure; nobody has to set its options for that.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options()
{
    return "detect_leaks=1:strict_string_checks=1:handle_abort=1";
}
extern "C" const char* __tsan_default_options();
extern "C" const char* __tsan_default_options()
{
    return "halt_on_error=1:second_deadlock_stack=1";
}
extern "C" const char* __ubsan_default_options();
extern "C" const char* __ubsan_default_options()
{
    return "print_stacktrace=1";
}
