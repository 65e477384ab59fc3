// no_entry_plugin.cpp - a loadable library without the entry point Main, for
// the host's loading errors.
extern "C" __attribute__((visibility("default"))) int NotTheEntryPoint(int value)
{
    return value + 1;
}
