// The program that the tests' precompiled headers are made with. It does nothing.

int main() {}
