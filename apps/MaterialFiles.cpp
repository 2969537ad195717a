// VelmarBase: command line.
#include "MaterialFiles.h"

#include "ModelFile.h"
#include "base/BFile.h"
#include "base/MEM.h"

namespace vx::cli
{

int ReadMaterialsInput(const std::string& name, std::vector<NamedMaterial>& materials)
{
    Input input{BString(name)};
    if (!input.Open())
    {
        BString why = input.Error();
        why.ReplaceAll("a Wavefront OBJ file", "a JSON file of materials");
        return Fail(kFailed, input.Name(), 0, why);
    }
    BFile file(input.Path());
    char* const text = file.Open(BFile::Mode::Read) == 0 ? file.ReadAll() : nullptr;
    if (!text)
        return Fail(kFailed, input.Name(), 0, file.LastError());
    MaterialsReport report;
    const BPath folder = input.IsStandardInput() ? BPath(".") : BPath(BString(name)).Parent();
    ReadMaterials(text, MEM_Count(text), ShownName(name), folder, materials, report);
    MEM_Free(text);
    if (!report.error.IsEmpty())
        Warn(report.error + "; none of its materials is used");
    for (const BArray<BString>* const list : {&report.problems, &report.warnings})
        for (const BString& line : *list)
            Warn(line);
    return kDone;
}

} // namespace vx::cli
