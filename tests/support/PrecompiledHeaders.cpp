// Empty: its target holds the headers that the sources of the tests have in common.
