// The precompiled header of all test programs is made with this program, because a program's
// objects are compiled with other options than a library's.
int main() {
    return 0;
}
