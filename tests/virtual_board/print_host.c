/* A program that is linked in a way that keeps it off every board. */
#include <stdio.h>

int main(void) {
    puts("on the host");
    return 0;
}
