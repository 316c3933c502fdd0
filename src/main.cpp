// Entry point of the client; the application shell and main loop are being brought up.
int main() { return 0; }
