// Runs the record decoder's benchmark and JavaScript's JSON.parse on the same task list, one after the other. Processor time,
// so that other programs on the machine disturb little.
//
//     node bench/json-parse.mjs build/release/bin/RecordsBench

import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";

const program = process.argv[2];
if (!program) {
    console.error("usage: node bench/json-parse.mjs PATH-OF-RecordsBench");
    process.exit(2);
}

const folder = mkdtempSync(join(tmpdir(), "parvela-bench-"));
try {
    const file = join(folder, "tasks.json");
    execFileSync(program, [file]);
    const text = readFileSync(file, "utf8");

    const times = [];
    for (let round = 0; round < 60; round += 1) {
        const start = process.cpuUsage();
        const { tasks } = JSON.parse(text);
        const used = process.cpuUsage(start);
        times.push((used.user + used.system) / 1000);
        if (tasks.length !== 5000) throw new Error("the list did not parse");
    }
    times.sort((a, b) => a - b);
    console.log(`${readFileSync(file).length} bytes, 5000 tasks`);
    console.log(`JSON.parse         median ${times[30].toFixed(2)} ms, fastest ${times[0].toFixed(2)} ms`);

    const report = JSON.parse(
        execFileSync(program, ["--benchmark_filter=decodeTaskList", "--benchmark_format=json",
            "--benchmark_repetitions=5"], { encoding: "utf8", stdio: ["ignore", "pipe", "ignore"] }));
    const runs = report.benchmarks.filter((run) => run.run_type === "iteration").map((run) => run.cpu_time);
    runs.sort((a, b) => a - b);
    console.log(`decode to records  median ${runs[2].toFixed(2)} ms, fastest ${runs[0].toFixed(2)} ms`);
} finally {
    rmSync(folder, { recursive: true });
}
