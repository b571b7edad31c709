// The parent's own library that happens to share a name with Strand's.
int parentStringUtilsAnswer() { return 42; }
