// CSV to CSV by the formulas of formulas.json, by the data frames of polars or by DuckDB.
//
// usage: node tables.mjs polars|DuckDB TABLE RESULTS THREADS
import { createRequire } from 'node:module'
import { join } from 'node:path'

const [library, table, results, threads] = process.argv.slice(2)
// Packages of the folder where the command is called.
const load = createRequire(join(process.cwd(), 'tables.mjs'))

if (library === 'polars') {
  process.env.POLARS_MAX_THREADS = threads
  const { default: pl } = await import(load.resolve('nodejs-polars'))
  const types = Object.fromEntries(['tx', 'ty', 'tz'].map((lane) => ['hips.' + lane, pl.Float32]))
  const f = (name) => pl.col(name).cast(pl.Float32)
  pl.readCSV(table, { dtypes: { ...types, 'rightarm.rz': pl.Float32, 'rightforearm.rz': pl.Float32 },
                      columns: ['hips.tx', 'hips.ty', 'hips.tz', 'rightarm.rz', 'rightforearm.rz'] })
    .withRowIndex('frame')
    .select(pl.col('frame'),
            f('hips.tx').mul(f('hips.tx')).add(f('hips.tz').mul(f('hips.tz'))).pow(0.5).alias('way.result'),
            f('rightarm.rz').sub(f('rightforearm.rz')).alias('bend.result'),
            f('hips.ty').mul(pl.lit(0.01).cast(pl.Float32)).alias('height.result'))
    .writeCSV(results)
} else {
  const { DuckDBInstance } = load('@duckdb/node-api')
  const connection = await (await DuckDBInstance.create(':memory:', { threads })).connect()
  const number = (name) => `'${name}': 'FLOAT'`
  const names = ['hips.tx', 'hips.ty', 'hips.tz', 'hips.rz', 'hips.ry', 'hips.rx', 'rightarm.rz', 'rightarm.ry',
                 'rightarm.rx', 'rightforearm.rz', 'rightforearm.ry', 'rightforearm.rx']
  await connection.run(`copy (
      select (row_number() over ()) - 1 as frame, sqrt("hips.tx" * "hips.tx" + "hips.tz" * "hips.tz")::float as "way.result",
             ("rightarm.rz" - "rightforearm.rz")::float as "bend.result", ("hips.ty" * 0.01::float)::float as "height.result"
      from read_csv('${table}', header = true, columns = {${names.map(number).join(', ')}})
    ) to '${results}' (header, delimiter ',')`)
}
