// Gives the tests' precompiled headers a target to be built in.
