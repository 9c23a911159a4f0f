// The least that a process can cost.
int main() { return 0; }
