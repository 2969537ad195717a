#include "shader/VXShaderCompiler.h"

int VXShaderCompiler::smNumActivations = 0;

VXShaderCompiler::~VXShaderCompiler() = default;

void VXShaderCompiler::PrepareForDrawScene() {}
