// Nothing of its own: the target needs a source to precompile the test framework's headers for.
