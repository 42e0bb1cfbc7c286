/* Makes a board and stops a fan of it. */

#include <stdio.h>
#include <vboard.h>

static int fail(const VBoardError *error) {
    fprintf(stderr, "%s: %s\n", vboardStatusName(error->status), error->text);
    return 1;
}

int main(int argc, char **argv) {
    VBoardOptions options = {sizeof(options), 0, "0x0709", "virtual", NULL, NULL, NULL, NULL};
    const VBoardChange stuck = {"fan.1.state", "stuck"};
    const char *name = "clock";
    VBoardProperty *properties;
    uint32_t count;
    VBoardError error;
    VBoard *board;
    if (argc != 2) {
        fprintf(stderr, "usage: consumer_vboard FOLDER\n");
        return 2;
    }
    if (vboardCreate(argv[1], &options, &error) != VBOARD_OK ||
        vboardOpen(argv[1], &board, &error) != VBOARD_OK)
        return fail(&error);
    if (vboardSet(board, &stuck, 1, &error) != VBOARD_OK ||
        vboardWait(board, "fan.1.speed == 0", 10000000000u, &error) != VBOARD_OK ||
        vboardGet(board, &name, 1, &properties, &count, &error) != VBOARD_OK) {
        vboardClose(board);
        return fail(&error);
    }
    printf("stands after %s seconds\n", properties[0].value);
    vboardFree(properties);
    vboardClose(board);
    return 0;
}
