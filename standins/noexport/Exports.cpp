// Stands where a library of another version stands: it loads, and lacks what is looked for.

extern "C" unsigned EntryPointOfAnotherVersion();

unsigned EntryPointOfAnotherVersion() { return 0; }
