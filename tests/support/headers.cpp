// Carries the headers that all suites share. A program, since only one is compiled as the suites are.
int main() {}
