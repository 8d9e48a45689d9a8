#include "Program.h"

int main(int argc, char** argv) { return Tavrine::Tool::RunProgram(argc, argv); }
